// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdio>
#include <gtest/gtest.h>

/// Removes at its end what has a name that is no text: Qt does not see it.
class NamedByBytes
{
public:
    explicit NamedByBytes(const QByteArray &path)
        : path_(path)
    {
    }
    ~NamedByBytes() { std::remove(path_.constData()); }
    NamedByBytes(const NamedByBytes &) = delete;
    NamedByBytes &operator=(const NamedByBytes &) = delete;

private:
    const QByteArray path_;
};

/// A folder of its own for a test, and what a test does to files besides the code under test.
class FileFixture : public ::testing::Test
{
protected:
    FileFixture() = default;
    /// The folder is made after \a pattern, which ends in "XXXXXX".
    explicit FileFixture(const QString &pattern)
        : folder_(pattern)
    {
    }

    /// Of any name, also one that Qt would take for a path of its own.
    QString in(const QString &name) const { return root() + u'/' + name; }

    static void put(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return file.readAll();
    }

    /// Everything in the folder, hidden files too.
    static QStringList namesIn(const QString &folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QString root() const { return folder_.path(); }

private:
    QTemporaryDir folder_;
};

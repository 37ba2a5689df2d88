// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/SharedFileList.h"
#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/TestApplication.h"

#include <QFileInfo>

/// A list of login items in a folder of its own.
class SharedFileListFixture : public FileFixture
{
protected:
    QString folder() const { return in(QStringLiteral("config/autostart")); }
    SharedFileList list() const { return SharedFileList::create(folder()).value(); }

    /// The path of an application made under that name.
    QString application(const QString &name) const
    {
        QString path = in(name);
        const TestApplication made(path);
        return path;
    }
    /// Has the application at \a path say what it is.
    static void identify(const QString &path, const QByteArray &identifier)
    {
        QFile information(path + QStringLiteral("/Contents/Info.plist"));
        ASSERT_TRUE(information.open(QIODevice::WriteOnly));
        information.write("<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>" +
                          QByteArray(TestApplication::defaultExecutable) +
                          "</string><key>CFBundleIdentifier</key><string>" + identifier +
                          "</string></dict></plist>");
    }
    /// The path of a program made under that name.
    QString program(const QString &name) const
    {
        QString path = in(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        EXPECT_TRUE(QFile::copy(QStringLiteral("/bin/true"), path));
        return path;
    }

    static QUrl urlOf(const QString &path) { return QUrl::fromLocalFile(path); }
    Result<> insert(const QString &path) const { return list().insertItemURL(urlOf(path)); }

    /// An entry of another program's making.
    void putEntry(const QString &name, const QByteArray &bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(folder()));
        put(folder() + u'/' + name, bytes);
    }
    void putForeign(const QString &name, const QByteArray &exec) const
    {
        putEntry(name, "[Desktop Entry]\nType=Application\nName=Foreign\nExec=" + exec + "\n");
    }

    QStringList fileNames() const { return namesOf(list().copySnapshot()); }
    static QStringList namesOf(const QList<SharedFileList::Item> &items)
    {
        QStringList names;
        for (const SharedFileList::Item &item : items)
            names << item.fileName();
        return names;
    }
    /// What the entries resolve to, in their order; empty where they do not.
    QStringList resolved() const
    {
        QStringList paths;
        const QList<SharedFileList::Item> items = list().copySnapshot();
        for (const SharedFileList::Item &item : items)
            paths << list().resolve(item).value_or(QUrl()).toLocalFile();
        return paths;
    }
    /// Of the only entry.
    QString entryPath() const
    {
        const QStringList names = fileNames();
        EXPECT_EQ(names.size(), 1);
        return folder() + u'/' + names.value(0);
    }
};

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Platform/Files/FileFixture.h"

#include <QByteArray>
#include <QString>
#include <optional>

/// A folder on a disk that keeps extended attributes, and the file manager's attribute byte by byte. Where no
/// such disk is at hand every test fails and says so.
class FinderFixture : public FileFixture
{
protected:
    FinderFixture();
    void SetUp() override;

    /// The attribute of the entry itself, if it has one.
    static std::optional<QByteArray> attributeOf(const QString &path);
    static void setAttribute(const QString &path, const QByteArray &attribute);

    QString makeFile(const QString &name = QStringLiteral("file")) const;
    QString makeFolder(const QString &name = QStringLiteral("folder")) const;
    /// A symbolic link of that name, with \a target as its text.
    QString makeLink(const QString &name, const QString &target) const;
    /// A pipe with a name: an entry that may have no attribute.
    QString makePipe() const;

    /// A file on a file system that knows no attributes, on every machine and for every user.
    static QString fileWithoutAttributes() { return QStringLiteral("/proc/self/status"); }
};

/// 32 bytes, each the number of its place plus one, so that none is zero and a misplaced one shows.
QByteArray numberedBytes();

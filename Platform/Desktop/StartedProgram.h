// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>

/// What the session starts for a file among its login items: the file itself if that is a program, of an
/// application bundle the executable; and how it is presented where the user sees it.
class StartedProgram
{
public:
    /// Of the file at the absolute \a path, any bytes. An application need not be fit to be started now.
    static Result<StartedProgram> ofFile(const QByteArray &path);

    /// Whether \a path leads to a file that this process may execute.
    static bool isProgram(const QByteArray &path);

    /// What the folder of links to the file at \a path is called, and its entry if it has no better name:
    /// readable, and the file's own.
    static QString nameOfPath(const QByteArray &path);

    const QByteArray &program() const { return program_; }

    /// What the application says of itself (`CFBundleDisplayName`, `CFBundleGetInfoString`,
    /// `CFBundleIconFile`), each in one line; without a name of its own that of the file, else empty.
    QByteArray name() const;
    QByteArray comment() const;
    QByteArray icon() const;

    /// What the entry that starts it is called, apart from its suffix: the application's identifier
    /// (`CFBundleIdentifier`) if desktops take that for one. They take the name for the identifier of what
    /// they have started, and some refuse programs without one.
    QString entryName() const;

    /// Whether the entry in \a fileName was named by an earlier version, which knew no identifiers.
    bool isEarlierName(const QString &fileName) const;

private:
    StartedProgram(QByteArray path, QByteArray program, QVariantMap information = {});

    /// Empty if the application does not say it.
    QString text(const QString &key) const;

    QByteArray path_;
    QByteArray program_;
    QVariantMap information_;
};

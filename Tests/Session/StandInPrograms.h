// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>
#include <QTemporaryDir>

/// Programs of a test's own: shell scripts that write down how they are started.
class StandInPrograms
{
public:
    StandInPrograms();

    /// Makes the program \a name in the folder. Once its start has been written down it does what \a then
    /// says to a shell.
    QString add(const QString &name, const QByteArray &then = {});
    /// The same at \a path; the name is how its starts are asked for.
    void addAt(const QString &path, const QString &name, const QByteArray &then = {});
    /// Something for the administrator's agent to do: wait until the file "granted" is in the folder, then
    /// become the tool that it was given after one option.
    QByteArray becomeToolOnceGranted() const;
    void grant();

    QString folder() const { return programs_.path(); }
    QString filePath(const QString &name) const { return records_.filePath(name); }
    /// The arguments of each start of \a name, in no order.
    QList<QByteArrayList> starts(const QString &name) const;
    /// The ids of the processes, likewise.
    QList<int> processes(const QString &name) const;

private:
    QTemporaryDir programs_;
    QTemporaryDir records_;
};

/// Whether this process has no child, not even one that has ended.
bool hasNoChild();

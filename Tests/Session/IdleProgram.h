// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"

#include <QString>
#include <QTemporaryDir>
#include <memory>

/// A program under a name of the test's choice that waits to be ended.
class IdleProgram
{
public:
    /// \a place is the folder for it, relative to a temporary one.
    explicit IdleProgram(const QString &name, const QString &place = {});

    QString name() const { return name_; }
    QString folder() const { return folder_.path(); }
    QString path() const { return path_; }

    /// Starts it, and returns when it waits. What \a arguments can say stands in Idle.cpp.
    std::unique_ptr<ChildProcess> start(const QStringList &arguments = {}) const;
    /// Starts it and lets it end, without asking how it did: the process id of a zombie, until that of the
    /// caller asks with waitpid().
    pid_t startZombie() const;

private:
    QString name_;
    QTemporaryDir folder_;
    QString path_;
};

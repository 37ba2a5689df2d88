// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

/// Programs that are killed in the midst of their work.
namespace KilledProcess {

/// Runs \a program until it is about to make the system call \a call for the time number \a number, from 1,
/// and kills it instead. False if it has come to its end before that.
bool isKilledAt(const QString &call, int number, const QString &program, const QStringList &arguments,
                QProcessEnvironment environment = QProcessEnvironment::systemEnvironment());

} // namespace KilledProcess

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What programs and libraries are to be like. Each function returns what is wrong; nothing if all is well.
namespace BinaryRules {

/// \a description is what `readelf -W --file-header --segments --dynamic --dyn-syms` says of a file: no code
/// at fixed addresses, no stack that can be executed, nothing left to be bound or written after the start.
QStringList violationsOfLinking(const QString &description);

/// The same \a description: returns are guarded by a value on the stack, and the C library checks the sizes
/// of what it is given.
QStringList violationsOfChecks(const QString &description);

/// \a code is the file itself; on x86 indirect jumps must lead to marked instructions.
QStringList violationsOfControlFlow(const QByteArray &code);

/// \a commands is the text of compile_commands.json; every source in the folders \a rooms is compiled with
/// all of \a flags. Some leave no trace in the file.
QStringList violationsOfFlags(const QByteArray &commands, const QStringList &rooms, const QStringList &flags);

} // namespace BinaryRules

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

/// Text in the forms that the file managers' files want.
namespace MenuText {

/// \a argument as one word of a shell, and of those who split a line as a shell would: in single quotes,
/// which keep everything but themselves.
QByteArray shellQuoted(const QByteArray &argument);

/// A command line for \a folder, as desktop entries and their like have it. What stands for the folder is
/// left to the file manager to replace and to quote.
QByteArray desktopCommandLine(const QByteArrayList &arguments, const QByteArray &folder);

/// The same for a shell, where "%" is doubled for those who put the folder in first.
QByteArray shellCommandLine(const QByteArrayList &arguments, const QByteArray &folder);

/// \a title where \a mark marks the key of a menu entry.
QString withoutMnemonics(const QString &title, QChar mark);

/// \a title where "%" begins what stands for a file.
QString withoutFieldCodes(const QString &title);

/// The number of the entry \a index, so that names with it are in order.
QString number(qsizetype index);

} // namespace MenuText

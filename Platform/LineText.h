// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// \a text in one line that shows every character of it, for a terminal, a menu, a notification or a window.
/// Names come from strangers: one may hold what ends a line, moves the cursor, turns the direction of
/// writing, or is seen as nothing.
///
/// A control character of ASCII is shown by its picture ("␊"); every other control or format character, line
/// or paragraph separator, invisible character and lone surrogate by its number ("<U+202E>"). All else stays
/// as it is: letters and marks of every script, also those written from right to left, and what these scripts
/// and emoji are spelled with, joiners and variation selectors, where they have an effect. A result goes
/// through unchanged when it is given again.
QString lineText(const QString &text);

/// The same of a name as the file system has it, which need be no text: a byte that is no UTF-8 is shown by
/// its value ("<0xFF>").
QString lineText(const QByteArray &name);

/// The same of a text of several lines, which is read with care: their ends and tabs stay, and every control
/// character is shown by its number, for which no font lacks a picture.
QString linesText(const QString &text);
QString linesText(const QByteArray &text);

/// A JSON document with the same values as \a json, UTF-8, in which every character that lineText() does not
/// leave as it is stands as an escape ("\\u202e"): what a stranger named can be printed on a terminal.
QByteArray escapedJson(const QByteArray &json);

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// The standard streams, as the command line uses them: what was asked for goes to the output, everything
/// else to the errors. A line that is shown to people shows every character of it.
class Console
{
public:
    /// \a text as it is, in UTF-8.
    void print(const QString &text);
    void print(const QByteArray &bytes);
    /// A line of its own.
    void printLine(const QString &line);
    void tell(const QString &message);

    /// Whether somebody is there to answer.
    bool canAsk() const;
    /// Shows \a text, which is several lines of the caller's making, and asks; false unless the answer is
    /// yes.
    bool ask(const QString &text, const QString &question);

    /// False if something could not be printed.
    bool finish();

private:
    bool hasPrinted_ = true;
};

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <memory>
#include <optional>

class Subprocess;

/// An administrator's right to run one tool once with given arguments, by `pkexec`.
///
/// Asking for the right and using it are two steps, but the user is asked once. Therefore the tool itself
/// waits in between: it has to ask, before it does anything, on its standard input, to go on at a line "y"
/// and to end having done nothing at the input's end (`rm -rf --interactive=once`). It is given the arguments
/// as a list and runs in the C locale; no shell reads them.
class Authorization
{
public:
    struct Options
    {
        /// Looked for on the path if it is no path itself.
        QString agent = QStringLiteral("pkexec");
        /// The folder of the process file system.
        QByteArray processes = QByteArrayLiteral("/proc");
    };

    Authorization();
    explicit Authorization(Options options);
    /// A right that was not used is gone, and the tool has done nothing.
    virtual ~Authorization();
    Authorization(const Authorization &) = delete;
    Authorization &operator=(const Authorization &) = delete;

    /// Asks the user to authenticate and waits for the answer, however long that takes. Windows are drawn,
    /// timers fire and sockets are read meanwhile, but what the user does to this process's windows waits.
    ///
    /// False when the user refused or may not, when there is no way to ask (a terminal never is one), when
    /// the event loop was told to end, or when it cannot be seen what became of the question; the log tells.
    virtual bool copyRights(const QByteArray &tool, const QByteArrayList &arguments);

    /// Lets the tool go on, with no input further to the "y", and does not wait for it. False, and nothing is
    /// done, without the right.
    virtual bool executeWithPrivileges();

private:
    /// None if it cannot be seen.
    std::optional<QByteArray> processName() const;
    void release();

    Options options_;
    std::unique_ptr<Subprocess> process_;
    bool granted_ = false;
};

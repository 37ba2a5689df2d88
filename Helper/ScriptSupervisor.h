// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileDescriptor.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <optional>
#include <sys/types.h>

/// A process between this program and one that it starts, to whom everything comes back that the program
/// starts: a child in a session of its own, and one whose parent has ended, too. (To have such children come
/// back is a property of a whole process, and this one has others.) So all of it can be ended, and nothing
/// else. For one thread at a time.
class ScriptSupervisor
{
public:
    enum class News {
        /// With the number of the system's error.
        CouldNotStart,
        /// With what waitpid() says.
        Ended,
        /// Everything was ended, because it was asked for.
        AllEnded,
        /// The supervisor is gone, and nothing is known of the program.
        Lost,
    };
    struct Report
    {
        News news = News::Lost;
        int value = 0;
    };

    /// Starts \a program with \a arguments in \a folder: nothing to read, what it writes goes to \a output,
    /// the environment is that of ScriptEnvironment, and otherwise as ProcessStart says. None with the reason
    /// in \a error if there is no supervisor for it.
    static std::optional<ScriptSupervisor> start(const QByteArray &program, const QByteArrayList &arguments,
                                                 const QByteArray &folder, int output, QString *error);
    ScriptSupervisor(ScriptSupervisor &&other) noexcept;
    ScriptSupervisor &operator=(ScriptSupervisor &&) = delete;
    /// The program goes on if it runs; nobody knows of it any more.
    ~ScriptSupervisor();

    /// Can be read from when there is news.
    int descriptor() const { return socket_.get(); }
    /// Waits for the news, which there is once.
    Report read();

    /// Ends the program and all that it has started, as far as the user may end it, and waits for that.
    void endAll();

private:
    ScriptSupervisor(FileDescriptor socket, pid_t pid);

    FileDescriptor socket_;
    pid_t pid_;
};

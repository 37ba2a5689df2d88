// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <chrono>
#include <memory>

class SessionBus;

/// Shows files in the desktop's file manager, by `org.freedesktop.FileManager1.ShowItems` on the session bus.
/// Nobody waits for the bus.
class FileViewer
{
public:
    /// A file manager may have to be started first.
    static constexpr std::chrono::milliseconds answerTimeout{10000};

    explicit FileViewer(std::shared_ptr<SessionBus> bus, std::chrono::milliseconds timeout = answerTimeout);

    /// Shows \a path selected in its folder. Without a bus, without a file manager on it, or if that refuses
    /// or says nothing in time, \a path is opened instead if it is a folder, otherwise the folder it is in.
    /// False if nothing is there to be shown.
    bool selectFile(const QString &path);

private:
    const std::shared_ptr<SessionBus> bus_;
    const std::chrono::milliseconds timeout_;
};

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <chrono>
#include <memory>

/// Shows files in the desktop's file manager, by `org.freedesktop.FileManager1.ShowItems` on the session bus.
///
/// The bus is spoken to on a thread of its own, started when first needed: nobody waits for it.
class FileViewer
{
public:
    /// A file manager may have to be started first.
    static constexpr std::chrono::milliseconds answerTimeout{10000};

    /// The session bus of the environment.
    FileViewer();
    /// A private bus, for tests.
    explicit FileViewer(QString busAddress, std::chrono::milliseconds timeout = answerTimeout);
    /// Leaves a file manager that says nothing to itself.
    ~FileViewer();
    FileViewer(const FileViewer &) = delete;
    FileViewer &operator=(const FileViewer &) = delete;

    /// Shows \a path selected in its folder. Without a bus, without a file manager on it, or if that refuses
    /// or says nothing in time, \a path is opened instead if it is a folder, otherwise the folder it is in.
    /// False if nothing is there to be shown.
    bool selectFile(const QString &path);

private:
    class Worker;
    QString busAddress_;
    std::chrono::milliseconds timeout_;
    std::unique_ptr<Worker> worker_;
};

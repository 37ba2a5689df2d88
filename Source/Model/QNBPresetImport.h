// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetRecord.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <chrono>
#include <memory>

QT_BEGIN_NAMESPACE
class QThread;
QT_END_NAMESPACE

/// Reads preset files on a thread of its own: a window stays alive meanwhile, however many files there are
/// and however large one is.
class QNBPresetImport final : public QObject
{
    Q_OBJECT

public:
    /// Starts at once.
    explicit QNBPresetImport(QStringList paths, QObject *parent = nullptr);
    /// Waits for the file that is being read, and reads no other.
    ~QNBPresetImport() override;

    /// Blocks until all files are read, but no longer than \a time; whether they are.
    bool wait(std::chrono::milliseconds time);
    /// Reads no further files.
    void cancel();

    /// In the order of the paths, without those that hold no preset. Empty before all files are read, and
    /// after cancelling.
    QList<QNBPresetRecordPtr> presets() const;

    /// A file that gave no preset, and why (English): what follows "it was left out:", without the path.
    struct LeftOut
    {
        QString path;
        QString reason;
    };
    /// In the order of the paths; as presets() otherwise.
    QList<LeftOut> leftOut() const;

Q_SIGNALS:
    void fileWasRead(int numberOfFilesRead);
    void finished();

private:
    void read();

    QStringList paths_;
    bool isCancelled_ = false;
    /// The thread's own until it has finished.
    QList<QNBPresetRecordPtr> presets_;
    QList<LeftOut> leftOut_;
    std::unique_ptr<QThread> thread_;
};

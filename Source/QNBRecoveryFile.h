// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/FileLock.h"
#include "Platform/Preferences.h"
#include "Source/QNBSettingsStore.h"

#include <QDateTime>
#include <QMutex>
#include <QObject>
#include <QThreadPool>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

/// What one running pane has not saved yet, in a file of its own that outlives a crash. A lock says that the
/// pane still runs; it is held while the file is there.
///
/// Encoding is the caller's, everything slow happens on a thread of its own. The file is written durably and
/// is readable by its owner only (0600). Nothing is written into a folder of another user.
class QNBRecoveryFile final : public QObject
{
    Q_OBJECT

public:
    /// \a folder is made when it is needed; nothing is ever written if it is empty. \a layer stands for the
    /// system calls, is called on the other thread, and is the real one if null; not owned.
    explicit QNBRecoveryFile(const QString &folder, FileLayer *layer = nullptr);
    /// Finishes. The file stays as it is.
    ~QNBRecoveryFile() override;

    /// Makes this the file's content, soon. Of several calls in a row the last one counts.
    void write(EncodedPreference settings);
    /// Nothing is unsaved any more.
    void remove();
    /// Waits for what was asked for.
    void finish() { thread_.waitForDone(); }

Q_SIGNALS:
    /// Emitted on the other thread.
    void failed(const QString &reason);

private:
    struct Removal
    {
    };
    using Order = std::variant<std::monostate, Removal, std::shared_ptr<EncodedPreference>>;

    void give(Order order);
    void obey();
    Result<> writeNow(const EncodedPreference &settings);
    Result<> removeNow();
    Result<> prepare();

    const QString folder_;
    FileLayer &layer_;
    /// On the thread that made this: whether there may be a file.
    bool isUsed_ = false;

    // On the other thread.
    QString path_;
    std::optional<FileLock> lock_;

    QMutex mutex_;
    Order order_;
    /// One thread, so that orders are obeyed in turn. The first to go.
    QThreadPool thread_;
};

/// What a pane that has ended, however it did, has left unsaved. Nobody else is offered it while this lives.
class QNBLeftRecovery final
{
public:
    /// All that \a folder holds of panes that do not run any more, the latest first. What their writers left
    /// half done is removed.
    static std::vector<QNBLeftRecovery> allIn(const QString &folder, FileLayer *layer = nullptr);

    const QString &path() const { return path_; }
    QDateTime written() const { return written_; }
    /// Fails for what is no recovery file, or somebody else's.
    Result<QNBSettings> read() const;
    /// Removes it for good.
    Result<> discard();

private:
    QNBLeftRecovery(FileLayer &layer, QString path, QDateTime written, FileLock lock);

    FileLayer *layer_;
    QString path_;
    QDateTime written_;
    std::unique_ptr<FileLock> lock_;
};

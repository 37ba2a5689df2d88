// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLock.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QDateTime>
#include <QMutex>
#include <QObject>
#include <QThreadPool>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

struct stat;

/// What a pane that has ended, however it did, has left unsaved. Nobody else is offered it while this lives.
class QNBLeftRecovery final
{
public:
    /// All that \a folder holds of panes that do not run any more, the latest first. What their writers left
    /// half done is removed.
    static std::vector<QNBLeftRecovery> allIn(const QString &folder, FileLayer *layer = nullptr);

    const QString &path() const { return path_; }
    /// When the pane showed it, which may be long before it came to the disk; of a file that does not say so,
    /// when it was written.
    const QDateTime &taken() const { return taken_; }
    /// A failure for what is no recovery file, or somebody else's.
    const Result<QNBSettings> &settings() const { return settings_; }
    /// Removes it for good.
    Result<> discard();

private:
    QNBLeftRecovery(FileLayer &layer, QString path, const struct stat &information, FileLock lock);

    FileLayer *layer_;
    QString path_;
    QDateTime taken_;
    Result<QNBSettings> settings_;
    std::unique_ptr<FileLock> lock_;
};

/// What one running pane has not saved yet, in a file of its own that outlives a crash. A lock says that the
/// pane still runs; it is held while the file is there.
///
/// Everything slow, encoding too, happens on a thread of its own. The file is written durably and
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

    /// Makes this the file's content, soon. Of several calls in a row the last one counts. What is in it too,
    /// \a superseded, is discarded as soon as it or a later content is on the disk, or removed.
    void write(QNBSettingsSnapshot settings, std::vector<QNBLeftRecovery> superseded = {});
    /// Nothing is unsaved any more; nor is what \a superseded holds.
    void remove(std::vector<QNBLeftRecovery> superseded = {});
    /// Waits for what was asked for.
    void finish() { thread_.waitForDone(); }

Q_SIGNALS:
    /// Emitted on the other thread.
    void failed(const QString &reason);

private:
    struct Removal
    {
    };
    using Order = std::variant<std::monostate, Removal, std::shared_ptr<const QNBSettingsSnapshot>>;

    void give(Order order, std::vector<QNBLeftRecovery> superseded);
    void obey();
    Result<> writeNow(const QNBSettingsSnapshot &settings);
    Result<> removeNow();
    Result<> prepare();

    const QString folder_;
    FileLayer &layer_;
    /// On the thread that made this: whether there may be a file.
    bool isUsed_ = false;

    // On the other thread.
    QString path_;
    std::optional<FileLock> lock_;
    /// By what was ordered up to now, as far as none of it has succeeded.
    std::vector<QNBLeftRecovery> superseded_;

    QMutex mutex_;
    Order order_;
    std::vector<QNBLeftRecovery> supersededByOrder_;
    /// One thread, so that orders are obeyed in turn. The first to go.
    QThreadPool thread_;
};

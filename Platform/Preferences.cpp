// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences.h"

#include "Platform/DesktopFolders.h"
#include "Platform/FileLayer.h"
#include "Platform/LineText.h"
#include "Platform/PreferencesFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>

#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(preferencesLog, "quenby.preferences")

namespace {

using Content = PreferencesFile::Content;

const QString domainSuffix = QStringLiteral(".plist");
/// A file that changes its place while its lock is waited for is looked for again, a few times.
constexpr int locatingAttempts = 3;

} // namespace

class Preferences::Private
{
public:
    Private(const QString &domain, const Options &given)
        : options(given)
        , layer(given.layer ? *given.layer : FileLayer::real())
    {
        const QString folder = options.folder.isEmpty() ? DesktopFolders::configHome() : options.folder;
        if (!folder.isEmpty())
            path = QDir(folder).filePath(domain + domainSuffix);
    }

    void readOnce()
    {
        if (!isRead)
            (void)read();
    }

    Result<> read() { return logged("reading", &Private::readAgain); }
    Result<> synchronise() { return values.hasPending() ? logged("saving", &Private::save) : read(); }

    Result<> logged(const char *doing, Result<> (Private::*act)())
    {
        isRead = true;
        Result<> result = path.isEmpty()
                              ? Result<>::failure(QStringLiteral("there is no home for the preferences"))
                              : (this->*act)();
        if (!result)
            qCWarning(preferencesLog, "%s %ls: %ls", doing, qUtf16Printable(lineText(path)),
                      qUtf16Printable(lineText(result.error)));
        return result;
    }

    /// Locates the file and locks it, so that the path still stands for the file that is locked.
    std::optional<FileLock> lockedFile(PreferencesFile &file, bool create, int timeout, QString *error) const
    {
        if (Result<> result = file.locate(create); !result) {
            *error = result.error;
            return std::nullopt;
        }
        for (int attempt = 0; attempt < locatingAttempts; ++attempt) {
            std::optional<FileLock> lock = file.lock(options.lockFolder, timeout, error);
            if (!lock)
                return std::nullopt;
            const QString locked = file.target();
            if (Result<> result = file.locate(false); !result) {
                *error = result.error;
                return std::nullopt;
            }
            if (file.target() == locked)
                return lock;
        }
        *error = QStringLiteral("the link %1 changes all the time").arg(path);
        return std::nullopt;
    }

    Result<> readAgain()
    {
        PreferencesFile file(layer, path);
        if (const Result<> located = file.locate(false); !located) {
            if (!file.isMissing())
                return stayUnread(located.error);
            forget();
            return {};
        }
        if (!straysRemoved) {
            // Whoever holds the lock now removes them too.
            QString busy;
            straysRemoved = true;
            if (const std::optional<FileLock> lock = file.lock(options.lockFolder, 0, &busy))
                file.removeStrayTemporaries();
        }
        Content content = file.read(values.bytes());
        if (content.state != Content::Damaged)
            return take(file, content);

        // Other hands are off it while it is moved; what another process has repaired meanwhile is read.
        QString error;
        const std::optional<FileLock> lock = lockedFile(file, false, options.lockTimeout, &error);
        if (lock)
            content = file.read(values.bytes());
        if (content.state != Content::Damaged)
            return take(file, content);
        (void)take(file, content);
        return lock ? repair(file, content.error)
                    : Result<>::failure(QStringLiteral("%1; %2").arg(content.error, error));
    }

    /// Makes what was read the state that values are read from.
    Result<> take(const PreferencesFile &file, const Content &content)
    {
        switch (content.state) {
        case Content::Missing:
            forget();
            return {};
        case Content::Good:
            values.setFile(content.bytes, content.document);
            setSeen();
            return {};
        case Content::Damaged:
        case Content::TooLarge:
            takeBackup(file);
            return Result<>::failure(content.error);
        case Content::Unreadable:
            break;
        }
        return stayUnread(content.error);
    }

    /// There is nothing, and whoever asks for values learns so.
    void forget()
    {
        values.forgetFile();
        backupBytes.clear();
        backupState = Content::Missing;
        unread.clear();
        isBlind = true;
    }

    void setSeen()
    {
        unread.clear();
        // What is pending may have been set before.
        isBlind = isBlind && values.hasPending();
    }

    /// What was known before is as good as it was: a save looks at the file again.
    Result<> stayUnread(const QString &reason)
    {
        if (values.bytes().isEmpty()) {
            unread = reason;
            isBlind = true;
        }
        return Result<>::failure(reason);
    }

    void takeBackup(const PreferencesFile &file)
    {
        forget();
        const Content backup = file.readBackup();
        if (backup.state == Content::Good) {
            values.setFile({}, backup.document);
            backupBytes = backup.bytes;
            setSeen();
            qCWarning(preferencesLog, "the last good backup of %ls is read", qUtf16Printable(lineText(path)));
        } else {
            backupState = backup.state;
            if (backup.state == Content::Unreadable)
                unread = backup.error;
            qCWarning(preferencesLog, "there is no good backup: %ls",
                      qUtf16Printable(lineText(backup.error)));
        }
    }

    /// Under the lock, after take().
    Result<> keepDamaged(const PreferencesFile &file) const
    {
        if (backupState == Content::Unreadable)
            return Result<>::failure(QStringLiteral("its backup cannot be read now, and may be good"));
        if (Result<> result = file.keepDamagedAside(); !result)
            return result;
        return backupState == Content::Missing ? Result<>() : file.keepBackupAside();
    }

    /// Puts the last good backup in the place of a damaged file, which is kept aside: at no moment is there
    /// neither. Without a good backup the damaged file just goes.
    Result<> repair(const PreferencesFile &file, const QString &reason)
    {
        qCWarning(preferencesLog, "%ls; it is kept aside", qUtf16Printable(lineText(reason)));
        if (Result<> result = keepDamaged(file); !result)
            return result;
        if (backupBytes.isEmpty())
            return file.remove();
        Result<> result = file.write(backupBytes, false);
        if (result)
            values.setFile(backupBytes, nullptr);
        return result;
    }

    Result<> save()
    {
        if (!unread.isEmpty())
            return Result<>::failure(QStringLiteral("what is there could not be read: %1").arg(unread));
        PreferencesFile file(layer, path);
        QString error;
        const std::optional<FileLock> lock = lockedFile(file, true, options.lockTimeout, &error);
        if (!lock)
            return Result<>::failure(error);
        straysRemoved = true;
        file.removeStrayTemporaries();

        const Content content = file.read(values.bytes());
        if (content.state == Content::Unreadable)
            return Result<>::failure(content.error);
        const bool wasBlind = isBlind;
        const Result<> taken = take(file, content);
        isBlind = wasBlind;
        if (!taken) {
            qCWarning(preferencesLog, "%ls; it is kept aside", qUtf16Printable(lineText(taken.error)));
            const Result<> kept = keepDamaged(file);
            // The file was read before: the next save looks again.
            unread.clear();
            if (!kept)
                return kept;
        }
        if (isBlind && content.state == Content::Good && values.replacesOthers()) {
            qCWarning(preferencesLog, "%ls was not known when its values were set; a copy is kept aside",
                      qUtf16Printable(lineText(file.target())));
            if (Result<> result = file.keepCopyAside(); !result)
                return result;
        }

        const PropertyList::WriteResult merged = values.merged();
        if (!merged)
            return Result<>::failure(merged.error);
        if (!isUnsure && values.saysTheSame(*merged.bytes)) {
            values.settle(content.bytes);
        } else {
            isUnsure = true;
            if (Result<> result = file.write(*merged.bytes, content.state == Content::Good); !result)
                return result;
            isUnsure = false;
            keepEarlierState(content);
            values.settle(*merged.bytes);
        }
        isBlind = false;
        return {};
    }

    /// After a save, which is done whatever becomes of this.
    void keepEarlierState(const Content &replaced) const
    {
        if (options.statesFolder.isEmpty() || replaced.state != Content::Good)
            return;
        if (const Result<> kept =
                EarlierStates(options.statesFolder, &layer).keep(replaced.bytes, replaced.modified);
            !kept)
            qCWarning(preferencesLog, "no earlier state of %ls is kept: %ls", qUtf16Printable(lineText(path)),
                      qUtf16Printable(lineText(kept.error)));
    }

    const Options options;
    FileLayer &layer;
    QString path;
    PreferenceValues values;

    bool isRead = false;
    bool straysRemoved = false;
    /// Why the file, which is there, was never read; empty if it was, or if there is none.
    QString unread;
    /// Who set the values that are pending may not know those that are in the file.
    bool isBlind = false;
    /// The last write failed: what the file shows may not be on the disk.
    bool isUnsure = false;
    // Of the backup, where that is read for the file.
    QByteArray backupBytes;
    Content::State backupState = Content::Missing;
};

Preferences::Preferences(const QString &domain)
    : Preferences(domain, Options{.statesFolder = EarlierStates::folder()})
{
}

Preferences::Preferences(const QString &domain, const Options &options)
    : d_(std::make_unique<Private>(domain, options))
{
}

Preferences::~Preferences() = default;

QVariant Preferences::copyAppValue(const QString &key) const
{
    d_->readOnce();
    return d_->values.value(key);
}

PropertyListNode Preferences::copyAppNode(const QString &key, PropertyListDocument::Ptr *keepAlive) const
{
    d_->readOnce();
    return d_->values.node(key, keepAlive);
}

void Preferences::setAppValue(const QString &key, const QVariant &value)
{
    d_->values.set(key, value);
}

void Preferences::setAppValue(const QString &key, EncodedPreference value)
{
    d_->values.set(key, std::move(value));
}

Result<> Preferences::appSynchronize()
{
    return d_->synchronise();
}

Result<> Preferences::read()
{
    return d_->read();
}

bool Preferences::isUnread() const
{
    return !d_->unread.isEmpty();
}

bool Preferences::hasPendingValues() const
{
    return d_->values.hasPending();
}

Result<> Preferences::keepAsideCopy(const QString &reason)
{
    PreferencesFile file(d_->layer, d_->path);
    QString error;
    Result<> result;
    const std::optional<FileLock> lock = d_->lockedFile(file, false, d_->options.lockTimeout, &error);
    result = lock ? file.keepCopyAside() : Result<>::failure(error);
    if (result)
        qCWarning(preferencesLog, "%ls is kept aside: %ls", qUtf16Printable(lineText(d_->path)),
                  qUtf16Printable(lineText(reason)));
    else
        qCWarning(preferencesLog, "%ls cannot be kept aside: %ls", qUtf16Printable(lineText(d_->path)),
                  qUtf16Printable(lineText(result.error)));
    return result;
}

QList<EarlierStates::State> Preferences::earlierStates() const
{
    PreferencesFile file(d_->layer, d_->path);
    QList<EarlierStates::State> states;
    if (!d_->options.statesFolder.isEmpty())
        states = EarlierStates(d_->options.statesFolder, &d_->layer).all();
    if (file.locate(false)) {
        for (const QString &path : file.goodStates()) {
            const QFileInfo information(path);
            states.append({information.lastModified().toUTC(), path, information.size()});
        }
    }
    std::stable_sort(states.begin(), states.end(),
                     [](const auto &one, const auto &other) { return one.saved > other.saved; });
    QSet<QByteArray> contents;
    states.removeIf([&contents](const EarlierStates::State &state) {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        QFile opened(state.path);
        if (!opened.open(QIODevice::ReadOnly) || !hash.addData(&opened))
            return true;
        const qsizetype before = contents.size();
        contents.insert(hash.result());
        return contents.size() == before;
    });
    return states;
}

QString Preferences::path() const
{
    return d_->path;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/Preferences.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/FileLayer.h"
#include "Platform/LineText.h"
#include "Platform/Preferences/PreferencesFile.h"

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
        damage.reset();
        if (path.isEmpty())
            unread = QStringLiteral("there is no home for the preferences");
        Result<> result = path.isEmpty() ? Result<>::failure(unread) : (this->*act)();
        if (damage)
            logDamage();
        if (!result)
            qCWarning(preferencesLog, "%s %ls: %ls", doing, qUtf16Printable(lineText(path)),
                      qUtf16Printable(lineText(result.error)));
        return result;
    }

    /// Locates the file and locks it, so that the path still stands for the file that is locked.
    Result<FileLock> lockedFile(PreferencesFile &file, bool create, int timeout) const
    {
        if (Result<> result = file.locate(create); !result)
            return Result<FileLock>::failure(result.error);
        for (int attempt = 0; attempt < locatingAttempts; ++attempt) {
            Result<FileLock> lock = file.lock(options.lockFolder, timeout);
            if (!lock)
                return lock;
            const QString locked = file.target();
            if (Result<> result = file.locate(false); !result)
                return Result<FileLock>::failure(result.error);
            if (file.target() == locked)
                return lock;
        }
        return Result<FileLock>::failure(QStringLiteral("the link %1 changes all the time").arg(path));
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
        if (!straysRemoved && !options.isReadOnly) {
            // Whoever holds the lock now removes them too.
            straysRemoved = true;
            if (const Result<FileLock> lock = file.lock(options.lockFolder, 0))
                file.removeStrayTemporaries();
        }
        Result<> taken = take(file, file.read(values.bytes()));
        if (!taken || !damage || options.isReadOnly)
            return taken;

        // Other hands are off it while it is moved; what another process has mended meanwhile is read.
        const Result<FileLock> lock = lockedFile(file, false, options.lockTimeout);
        if (lock)
            taken = take(file, file.read(values.bytes()));
        if (!lock || (taken && damage))
            taken = lock ? mend(file) : Result<>::failure(lock.error);
        if (!taken)
            unread = taken.error;
        return taken;
    }

    /// Makes what was read the state that values are read from, or that of the backup where the file is
    /// damaged.
    Result<> take(const PreferencesFile &file, const Content &content)
    {
        damage.reset();
        backup = {};
        switch (content.state) {
        case Content::Good:
            values.setFile(content.bytes, content.document);
            setSeen();
            return {};
        case Content::Missing:
            return takeBackup(file, content, Damage::Cause::Missing);
        case Content::Damaged:
            return takeBackup(file, content, Damage::Cause::Broken);
        case Content::TooLarge:
            return takeBackup(file, content, Damage::Cause::TooLarge);
        case Content::Unreadable:
            break;
        }
        return stayUnread(content.error);
    }

    /// There is nothing, and whoever asks for values learns so.
    void forget()
    {
        values.forgetFile();
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

    Result<> takeBackup(const PreferencesFile &file, const Content &content, Damage::Cause cause)
    {
        forget();
        backup = file.readBackup();
        if (content.state == Content::Missing && backup.state == Content::Missing)
            return {};
        const bool isGood = backup.state == Content::Good;
        if (backup.state == Content::Unreadable)
            unread = QStringLiteral("%1; its backup may be good: %2").arg(content.error, backup.error);
        else if (!isGood && (content.state == Content::TooLarge || options.isReadOnly))
            unread = content.error;
        if (!unread.isEmpty())
            return Result<>::failure(unread);

        damage = Damage{.cause = cause,
                        .reason = cause == Damage::Cause::Missing
                                      ? QStringLiteral("%1 is missing").arg(file.target())
                                      : content.error};
        if (isGood) {
            damage->backup = backup.modified;
            values.setFile({}, backup.document);
            setSeen();
        }
        return {};
    }

    /// Under the lock, after take(): keeps all that cannot be read under other names.
    Result<> keepDamaged(const PreferencesFile &file)
    {
        QStringList kept;
        const auto keep = [&](Result<QString> (PreferencesFile::*aside)() const) {
            Result<QString> name = (file.*aside)();
            if (!name)
                return Result<>::failure(name.error);
            kept.append(*name);
            return Result<>();
        };
        if (damage->cause != Damage::Cause::Missing) {
            if (Result<> result = keep(&PreferencesFile::keepDamagedAside); !result)
                return result;
        }
        if (backup.state == Content::Damaged || backup.state == Content::TooLarge) {
            if (Result<> result = keep(&PreferencesFile::keepBackupAside); !result)
                return result;
        }
        damage->kept = kept;
        return {};
    }

    /// Puts the last good backup in the place of a damaged file, which is kept aside: at no moment is there
    /// neither. Without a good backup both just go, the file last; one that a link leads to stays until it is
    /// saved over, so that the link does not lead nowhere.
    Result<> mend(const PreferencesFile &file)
    {
        Result<> result = keepDamaged(file);
        if (result && backup.state == Content::Good) {
            result = file.restore(backup);
            if (result)
                values.setFile(backup.bytes, nullptr);
            return result;
        }
        if (result)
            result = file.removeBackup();
        return result && !file.isLink() ? file.remove() : result;
    }

    void logDamage() const
    {
        QString said = damage->reason;
        if (!damage->kept.isEmpty())
            said += QStringLiteral("; it is kept as %1").arg(damage->kept.join(QStringLiteral(", ")));
        said += damage->backup.isValid()
                    ? QStringLiteral("; its backup of %1 is read").arg(damage->backup.toString(Qt::ISODate))
                    : QStringLiteral("; there is no good backup");
        qCWarning(preferencesLog, "%ls", qUtf16Printable(lineText(said)));
    }

    Result<> save()
    {
        if (options.isReadOnly)
            return Result<>::failure(QStringLiteral("the preferences are only read here"));
        if (!unread.isEmpty())
            return Result<>::failure(QStringLiteral("what is there could not be read: %1").arg(unread));
        PreferencesFile file(layer, path);
        const Result<FileLock> lock = lockedFile(file, true, options.lockTimeout);
        if (!lock)
            return Result<>::failure(lock.error);
        straysRemoved = true;
        file.removeStrayTemporaries();

        const Content content = file.read(values.bytes());
        if (content.state == Content::Unreadable)
            return Result<>::failure(content.error);
        const Result<> taken = take(file, content);
        // The file was read before: the next save looks again.
        unread.clear();
        if (!taken)
            return taken;
        if (damage) {
            if (Result<> kept = keepDamaged(file); !kept)
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
    std::optional<Damage> damage;
    /// Read where the file is damaged.
    Content backup;
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

const std::optional<Preferences::Damage> &Preferences::damage() const
{
    return d_->damage;
}

bool Preferences::hasPendingValues() const
{
    return d_->values.hasPending();
}

Result<> Preferences::keepAsideCopy(const QString &reason)
{
    if (d_->options.isReadOnly)
        return {};
    PreferencesFile file(d_->layer, d_->path);
    const Result<FileLock> lock = d_->lockedFile(file, false, d_->options.lockTimeout);
    const Result<> result = lock ? file.keepCopyAside() : Result<>::failure(lock.error);
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

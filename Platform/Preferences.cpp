// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences.h"

#include "Platform/DesktopFolders.h"
#include "Platform/FileLayer.h"
#include "Platform/PreferencesFile.h"

#include <QDir>
#include <QLoggingCategory>

#include <map>
#include <variant>
#include <vector>

Q_LOGGING_CATEGORY(preferencesLog, "quenby.preferences")

namespace {

using Content = PreferencesFile::Content;
using Ref = BinaryPropertyListWriter::Ref;

const QString domainSuffix = QStringLiteral(".plist");
/// A file that changes its place while its lock is waited for is looked for again, a few times.
constexpr int locatingAttempts = 3;

PropertyListDocument::Ptr documentOf(const EncodedPreference &encoded)
{
    const PropertyList::WriteResult written = encoded.writer.finish(encoded.top);
    QString error = written.error;
    PropertyListDocument::Ptr document;
    if (written)
        document = PropertyListDocument::parse(*written.bytes, &error);
    if (!document)
        qCWarning(preferencesLog, "a value that was set is no property list: %ls", qUtf16Printable(error));
    return document;
}

} // namespace

class Preferences::Private
{
public:
    /// A value set: as it is, or encoded and then, when somebody asked for it, read back.
    struct Encoded
    {
        EncodedPreference preference;
        PropertyListDocument::Ptr document;
    };
    using Value = std::variant<QVariant, std::unique_ptr<Encoded>>;
    /// Stands in saved for a value that only the saved bytes hold.
    struct InBytes
    {
    };
    using Saved = std::variant<QVariant, InBytes>;

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
            (void)synchronise();
    }

    Result<> synchronise()
    {
        isRead = true;
        Result<> result = path.isEmpty()
                              ? Result<>::failure(QStringLiteral("there is no home for the preferences"))
                          : pending.empty() ? readAgain()
                                            : save();
        if (!result) {
            qCWarning(preferencesLog, "%s %ls: %ls", pending.empty() ? "reading" : "saving",
                      qUtf16Printable(path), qUtf16Printable(result.error));
        }
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
        if (!file.locate(false)) {
            // Nothing there, or a link that leads nowhere; a save will say which.
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
        Content content = file.read(bytes);
        if (content.state != Content::Damaged)
            return take(file, content);

        // Other hands are off it while it is moved; what another process has repaired meanwhile is read.
        QString error;
        const std::optional<FileLock> lock = lockedFile(file, false, options.lockTimeout, &error);
        if (lock)
            content = file.read(bytes);
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
            if (content.document) {
                document = content.document;
                saved.clear();
            }
            bytes = content.bytes;
            return {};
        case Content::Damaged:
        case Content::TooLarge:
            takeBackup(file);
            return Result<>::failure(content.error);
        case Content::Unreadable:
            break;
        }
        forget();
        isUnseen = true;
        return Result<>::failure(content.error);
    }

    void takeBackup(const PreferencesFile &file)
    {
        forget();
        const Content backup = file.readBackup();
        if (backup.state == Content::Good) {
            document = backup.document;
            backupBytes = backup.bytes;
            qCWarning(preferencesLog, "the last good backup of %ls is read", qUtf16Printable(path));
        } else {
            backupState = backup.state;
            isUnseen = isUnseen || backup.state == Content::Unreadable;
            qCWarning(preferencesLog, "there is no good backup: %ls", qUtf16Printable(backup.error));
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

    /// Keeps what the values are read from now, and could not be read from when they were asked for.
    static Result<> keepUnseen(const PreferencesFile &file, Content::State state)
    {
        if (state == Content::Missing)
            return {};
        qCWarning(preferencesLog, "%ls could not be read before; a copy is kept aside",
                  qUtf16Printable(file.target()));
        return state == Content::Good ? file.keepCopyAside() : file.keepBackupAside();
    }

    /// Puts the last good backup in the place of a damaged file, which is kept aside: at no moment is there
    /// neither. Without a good backup the damaged file just goes.
    Result<> repair(const PreferencesFile &file, const QString &reason)
    {
        qCWarning(preferencesLog, "%ls; it is kept aside", qUtf16Printable(reason));
        if (Result<> result = keepDamaged(file); !result)
            return result;
        if (backupBytes.isEmpty())
            return file.remove();
        Result<> result = file.write(backupBytes, false);
        if (result)
            bytes = backupBytes;
        return result;
    }

    Result<> save()
    {
        PreferencesFile file(layer, path);
        QString error;
        const std::optional<FileLock> lock = lockedFile(file, true, options.lockTimeout, &error);
        if (!lock)
            return Result<>::failure(error);
        straysRemoved = true;
        file.removeStrayTemporaries();

        const Content content = file.read(bytes);
        if (content.state == Content::Unreadable)
            return Result<>::failure(content.error);
        const bool wasUnseen = isUnseen;
        const Result<> taken = take(file, content);
        if (!taken) {
            qCWarning(preferencesLog, "%ls; it is kept aside", qUtf16Printable(taken.error));
            if (Result<> result = keepDamaged(file); !result)
                return result;
        }
        if (wasUnseen) {
            if (Result<> result = keepUnseen(file, content.state); !result)
                return result;
            isUnseen = false;
        }

        const PropertyList::WriteResult merged = merge();
        if (!merged)
            return Result<>::failure(merged.error);
        Result<> result = file.write(*merged.bytes, content.state == Content::Good);
        if (result)
            settle(*merged.bytes);
        return result;
    }

    /// The document of what is known of the disk with what is pending in it. The largest value that is
    /// encoded already is where the others are added, and is left as it was.
    PropertyList::WriteResult merge()
    {
        for (const auto &[key, value] : saved) {
            if (std::holds_alternative<InBytes>(value) && !pending.contains(key)) {
                readSavedBytes();
                break;
            }
        }

        Encoded *base = nullptr;
        for (const auto &[key, value] : pending) {
            const auto *encoded = std::get_if<std::unique_ptr<Encoded>>(&value);
            if (encoded &&
                (!base || (*encoded)->preference.writer.mark().bytes > base->preference.writer.mark().bytes))
                base = encoded->get();
        }
        BinaryPropertyListWriter own;
        BinaryPropertyListWriter &writer = base ? base->preference.writer : own;
        const BinaryPropertyListWriter::Mark mark = writer.mark();
        PropertyList::WriteResult result = merge(writer, base);
        writer.rewind(mark);
        return result;
    }

    PropertyList::WriteResult merge(BinaryPropertyListWriter &writer, const Encoded *base) const
    {
        std::map<QString, PropertyListNode> kept;
        const PropertyListNode root = document ? document->root() : PropertyListNode();
        for (qsizetype i = 0, count = root.isDictionary() ? root.count() : 0; i < count; ++i) {
            const QString &key = root.keyAt(i);
            if (!pending.contains(key) && !saved.contains(key))
                kept[key] = root.valueAt(i);
        }

        std::vector<Ref> keys;
        std::vector<Ref> values;
        const auto add = [&](const QString &key, Ref value) {
            keys.push_back(writer.string(key));
            values.push_back(value);
        };
        for (const auto &[key, node] : kept)
            add(key, writer.value(node));
        for (const auto &[key, value] : saved) {
            const auto *variant = std::get_if<QVariant>(&value);
            if (variant && variant->isValid() && !pending.contains(key))
                add(key, writer.value(*variant));
        }
        for (const auto &[key, value] : pending) {
            if (const auto *variant = std::get_if<QVariant>(&value)) {
                if (variant->isValid())
                    add(key, writer.value(*variant));
                continue;
            }
            const auto &encoded = std::get<std::unique_ptr<Encoded>>(value);
            if (encoded.get() == base) {
                add(key, base->preference.top);
                continue;
            }
            const PropertyListDocument::Ptr other = documentOf(encoded->preference);
            if (!other)
                return {std::nullopt, QStringLiteral("the value of %1 is no property list").arg(key)};
            add(key, writer.value(other->root()));
        }
        return writer.finish(writer.dictionary(keys, values));
    }

    /// What was pending is on disk.
    void settle(const QByteArray &written)
    {
        for (const auto &[key, value] : pending) {
            if (const auto *variant = std::get_if<QVariant>(&value))
                saved.insert_or_assign(key, *variant);
            else
                saved.insert_or_assign(key, InBytes());
        }
        pending.clear();
        bytes = written;
    }

    /// Makes the state the bytes that were saved; they were written here, so they can be read.
    void readSavedBytes()
    {
        QString error;
        document = PropertyListDocument::parse(bytes, &error);
        if (!document)
            qCCritical(preferencesLog, "what was saved cannot be read: %ls", qUtf16Printable(error));
        saved.clear();
    }

    void forget()
    {
        document.reset();
        saved.clear();
        bytes.clear();
        backupBytes.clear();
        backupState = Content::Missing;
    }

    PropertyListNode node(const QString &key, PropertyListDocument::Ptr *keepAlive)
    {
        readOnce();
        if (const auto found = pending.find(key); found != pending.end()) {
            if (const auto *variant = std::get_if<QVariant>(&found->second)) {
                *keepAlive = variant->isValid() ? PropertyListDocument::fromVariant(*variant) : nullptr;
            } else {
                const auto &encoded = std::get<std::unique_ptr<Encoded>>(found->second);
                if (!encoded->document)
                    encoded->document = documentOf(encoded->preference);
                *keepAlive = encoded->document;
            }
            return *keepAlive ? (*keepAlive)->root() : PropertyListNode();
        }
        if (const auto found = saved.find(key); found != saved.end()) {
            if (const auto *variant = std::get_if<QVariant>(&found->second)) {
                *keepAlive = variant->isValid() ? PropertyListDocument::fromVariant(*variant) : nullptr;
                return *keepAlive ? (*keepAlive)->root() : PropertyListNode();
            }
            readSavedBytes();
        }
        *keepAlive = document;
        return document ? document->root().value(key) : PropertyListNode();
    }

    const Options options;
    FileLayer &layer;
    QString path;
    std::map<QString, Value> pending;

    // What is known of the disk: the bytes, the document as it was last parsed, and what was saved since.
    bool isRead = false;
    bool straysRemoved = false;
    /// Could not be read when it was asked for: who sets values now may not know those that are there.
    bool isUnseen = false;
    QByteArray bytes;
    PropertyListDocument::Ptr document;
    std::map<QString, Saved> saved;
    // Of the backup, where that is read for the file.
    QByteArray backupBytes;
    Content::State backupState = Content::Missing;
};

Preferences::Preferences(const QString &domain)
    : Preferences(domain, Options())
{
}

Preferences::Preferences(const QString &domain, const Options &options)
    : d_(std::make_unique<Private>(domain, options))
{
}

Preferences::~Preferences() = default;

QVariant Preferences::copyAppValue(const QString &key) const
{
    if (const auto found = d_->pending.find(key); found != d_->pending.end()) {
        if (const auto *variant = std::get_if<QVariant>(&found->second))
            return *variant;
    }
    PropertyListDocument::Ptr keepAlive;
    return d_->node(key, &keepAlive).toVariant();
}

PropertyListNode Preferences::copyAppNode(const QString &key, PropertyListDocument::Ptr *keepAlive) const
{
    return d_->node(key, keepAlive);
}

void Preferences::setAppValue(const QString &key, const QVariant &value)
{
    d_->pending.insert_or_assign(key, value);
}

void Preferences::setAppValue(const QString &key, EncodedPreference value)
{
    d_->pending.insert_or_assign(
        key, std::make_unique<Private::Encoded>(Private::Encoded{std::move(value), nullptr}));
}

Result<> Preferences::appSynchronize()
{
    return d_->synchronise();
}

bool Preferences::hasPendingValues() const
{
    return !d_->pending.empty();
}

Result<> Preferences::keepAsideCopy(const QString &reason)
{
    PreferencesFile file(d_->layer, d_->path);
    QString error;
    Result<> result;
    const std::optional<FileLock> lock = d_->lockedFile(file, false, d_->options.lockTimeout, &error);
    result = lock ? file.keepCopyAside() : Result<>::failure(error);
    if (result)
        qCWarning(preferencesLog, "%ls is kept aside: %ls", qUtf16Printable(d_->path),
                  qUtf16Printable(reason));
    else
        qCWarning(preferencesLog, "%ls cannot be kept aside: %ls", qUtf16Printable(d_->path),
                  qUtf16Printable(result.error));
    return result;
}

QString Preferences::path() const
{
    return d_->path;
}

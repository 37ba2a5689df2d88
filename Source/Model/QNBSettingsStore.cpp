// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBSettingsStore.h"

#include "Platform/Files/FileOperations.h"
#include "Platform/LineText.h"
#include "Shared/Source/QNBShared.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <vector>

Q_LOGGING_CATEGORY(lcStore, "quenby.store")

namespace {

const QString defaultPresetsResource = QStringLiteral("DefaultPresets");
const QString defaultSupportFolder = QStringLiteral("QNB Default AppSupport");
const QString propertyListType = QStringLiteral("plist");

/// Presets of an array of stored records, their trees not yet built. An entry that is no record is left out;
/// \a losses then says so.
QList<QNBPresetRecordPtr> presetsFrom(const PropertyListNode &array,
                                      const PropertyListDocument::Ptr &document, QStringList &losses)
{
    QList<QNBPresetRecordPtr> presets;
    if (!array.isArray()) {
        if (!array.isNull())
            losses << QStringLiteral("the presets are no array");
        return presets;
    }
    presets = QNBPresetRecord::listFromStored(array, document);
    for (qsizetype i = 0; i < presets.size(); ++i) {
        if (!presets[i])
            losses << QStringLiteral("preset %1 is no record").arg(i);
    }
    presets.removeAll(nullptr);
    return presets;
}

/// What was stored in the presets' trees and has no place in the items; told once.
QStringList takeLosses(const QList<QNBPresetRecordPtr> &presets)
{
    QStringList losses;
    for (const QNBPresetRecordPtr &preset : presets) {
        const QNBHierarchyItem::ReadReport report = preset->takeReadReport();
        if (report.losses > 0)
            losses << QStringLiteral(
                          "preset \"%1\" has %2 entries that its items have no place for, first under \"%3\"")
                          .arg(preset->label(), QString::number(report.losses), report.first);
    }
    return losses;
}

/// Keeps the domain as it stands if the next save would lose something.
void keepAside(Preferences &preferences, const QStringList &losses)
{
    if (losses.isEmpty())
        return;
    qCWarning(lcStore) << preferences.path() << losses;
    if (const Result<> kept = preferences.keepAsideCopy(losses.join(QStringLiteral("; "))); !kept)
        qCWarning(lcStore) << "no copy of the domain could be kept aside:" << kept.error;
}

BinaryPropertyListWriter::Ref encodePreset(const QNBPresetRecordPtr &record, BinaryPropertyListWriter &writer)
{
    return record->encode(writer);
}

BinaryPropertyListWriter::Ref encodePreset(const QNBPresetSnapshot &record, BinaryPropertyListWriter &writer)
{
    return record.encode(writer);
}

template <class Presets>
BinaryPropertyListWriter::Ref encodePresets(const Presets &presets, BinaryPropertyListWriter &writer)
{
    std::vector<BinaryPropertyListWriter::Ref> records;
    records.reserve(static_cast<std::size_t>(presets.size()));
    for (const auto &record : presets)
        records.push_back(encodePreset(record, writer));
    return writer.array(records);
}

QNBKeyCombo storedCombo(qint64 flags, qint64 code, const QVariant &isPlace)
{
    QNBKeyCombo combo{quint64(flags), code};
    combo.mayMeanCharacter = !combo.isEmpty() && !PropertyList::boolValue(isPlace).value_or(false);
    return combo;
}

/// Nothing is said of a hot key that there is not.
bool isKnownPlace(const QNBKeyCombo &combo)
{
    return !combo.isEmpty() && !combo.mayMeanCharacter;
}

void readHotKey(const Preferences &preferences, QNBKeyCombo &combo)
{
    const QVariant code = preferences.copyAppValue(QNBPreferenceKey::hotKeyCode);
    const QVariant flags = preferences.copyAppValue(QNBPreferenceKey::hotKeyFlags);
    if (!code.isValid() || !flags.isValid())
        return;
    const std::optional<qint64> codeValue = PropertyList::integerValue(code);
    const std::optional<qint64> flagsValue = PropertyList::integerValue(flags);
    if (!codeValue || !flagsValue) {
        qCWarning(lcStore) << "the hot key is no pair of numbers";
        return;
    }
    combo = storedCombo(*flagsValue, *codeValue, preferences.copyAppValue(QNBPreferenceKey::hotKeyIsPlace));
}

} // namespace

namespace QNBSettingsStore {

Result<> read(Preferences &preferences, const std::optional<Bundle> &bundle, QNBSettings &settings)
{
    // Synchronising would save what is pending, which has to wait for a read.
    Result<> result = preferences.isUnread() ? preferences.read() : preferences.appSynchronize();

    const QVariantMap stored = preferences.copyAppValue(QNBPreferenceKey::presetsStored).toMap();
    const bool loaded =
        PropertyList::boolValue(stored.value(QNBPreferenceKey::presetsStoredLoaded)).value_or(false);

    const QVariant showMenubar = preferences.copyAppValue(QNBPreferenceKey::showMenubar);
    if (showMenubar.isValid()) {
        settings.showMenubar = PropertyList::boolValue(showMenubar).value_or(false);
    } else {
        settings.showMenubar = true;
        // Of a domain that is unread nobody knows that the key is absent.
        if (!preferences.isUnread())
            preferences.setAppValue(QNBPreferenceKey::showMenubar, true);
    }

    readHotKey(preferences, settings.shortcutCombo);

    if (!loaded) {
        settings.presets = defaultPresets(bundle);
        return result;
    }
    PropertyListDocument::Ptr keepAlive;
    QStringList losses;
    const PropertyListNode presets = preferences.copyAppNode(QNBPreferenceKey::presets, &keepAlive);
    settings.presets = presetsFrom(presets, keepAlive, losses);
    keepAside(preferences, losses);
    return result;
}

Result<QNBSettings> stored(const std::optional<Bundle> &bundle)
{
    QNBSettings settings;
    Preferences preferences(QNBProductIdentifier(), {.isReadOnly = true});
    const Result<> result = read(preferences, bundle, settings);
    return result ? settings : Result<QNBSettings>::failure(result.error);
}

Result<QList<QNBPresetRecordPtr>> presetsOf(const QByteArray &domain)
{
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(domain, &error);
    if (!document)
        return Result<QList<QNBPresetRecordPtr>>::failure(error);
    const PropertyListNode presets = document->root().value(QNBPreferenceKey::presets);
    if (!presets.isArray())
        return Result<QList<QNBPresetRecordPtr>>::failure(QStringLiteral("it holds no presets"));
    QStringList losses;
    QList<QNBPresetRecordPtr> result = presetsFrom(presets, document, losses);
    if (!losses.isEmpty())
        qCWarning(lcStore) << "an earlier state:" << losses;
    return result;
}

Result<> write(Preferences &preferences, const QNBSettings &settings)
{
    keepAside(preferences, takeLosses(settings.presets));

    EncodedPreference presets;
    presets.top = encodePresets(settings.presets, presets.writer);
    preferences.setAppValue(QNBPreferenceKey::presetsStored,
                            QVariantMap{{QNBPreferenceKey::presetsStoredLoaded, true}});
    preferences.setAppValue(QNBPreferenceKey::presets, std::move(presets));
    preferences.setAppValue(QNBPreferenceKey::showMenubar, settings.showMenubar);
    preferences.setAppValue(QNBPreferenceKey::hotKeyCode, qlonglong(settings.shortcutCombo.code));
    // Signed, as they are read: all 64 bits come back.
    preferences.setAppValue(QNBPreferenceKey::hotKeyFlags, qlonglong(settings.shortcutCombo.flags));
    preferences.setAppValue(QNBPreferenceKey::hotKeyIsPlace,
                            isKnownPlace(settings.shortcutCombo) ? QVariant(true) : QVariant());
    return preferences.appSynchronize();
}

QList<QNBPresetRecordPtr> defaultPresets(const std::optional<Bundle> &bundle)
{
    const QString path =
        bundle ? bundle->pathForResource(defaultPresetsResource, propertyListType) : QString();
    if (path.isEmpty()) {
        qCWarning(lcStore) << "the bundle has no default presets";
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcStore) << "default presets cannot be read:" << path << file.errorString();
        return {};
    }
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(file.readAll(), &error);
    if (!document) {
        qCWarning(lcStore) << "default presets cannot be read:" << path << error;
        return {};
    }
    QStringList losses;
    QList<QNBPresetRecordPtr> presets = presetsFrom(document->root(), document, losses);
    losses << takeLosses(presets);
    if (!losses.isEmpty())
        qCWarning(lcStore) << "default presets:" << losses;
    return presets;
}

QNBSettingsSnapshot snapshot(const QNBSettings &settings, const QDateTime &taken)
{
    QNBSettingsSnapshot snapshot{{}, settings.showMenubar, settings.shortcutCombo, taken};
    snapshot.presets.reserve(static_cast<std::size_t>(settings.presets.size()));
    for (const QNBPresetRecordPtr &preset : settings.presets)
        snapshot.presets.push_back(preset->snapshot());
    return snapshot;
}

EncodedPreference encode(const QNBSettingsSnapshot &settings)
{
    EncodedPreference all;
    BinaryPropertyListWriter &writer = all.writer;
    std::vector keys{
        writer.string(QNBPreferenceKey::presetsStored), writer.string(QNBPreferenceKey::presets),
        writer.string(QNBPreferenceKey::showMenubar),   writer.string(QNBPreferenceKey::hotKeyCode),
        writer.string(QNBPreferenceKey::hotKeyFlags),   writer.string(QNBPreferenceKey::hotKeyIsPlace)};
    std::vector values{writer.value(QVariantMap{{QNBPreferenceKey::presetsStoredLoaded, true}}),
                       encodePresets(settings.presets, writer),
                       writer.boolean(settings.showMenubar),
                       writer.integer(settings.shortcutCombo.code),
                       writer.integer(qlonglong(settings.shortcutCombo.flags)),
                       writer.boolean(isKnownPlace(settings.shortcutCombo))};
    if (settings.taken.isValid()) {
        keys.push_back(writer.string(QNBPreferenceKey::taken));
        values.push_back(writer.value(settings.taken));
    }
    all.top = writer.dictionary(keys, values);
    return all;
}

QDateTime takenAt(const PropertyListDocument::Ptr &document)
{
    return document->root().value(QNBPreferenceKey::taken).toVariant().toDateTime();
}

Result<QNBSettings> decode(const PropertyListDocument::Ptr &document)
{
    const PropertyListNode root = document->root();
    const PropertyListNode presets = root.isDictionary() ? root.value(QNBPreferenceKey::presets) : root;
    const auto number = [&root](const QString &key) {
        return PropertyList::integerValue(root.value(key).toVariant());
    };
    QStringList losses;
    QNBSettings settings;
    if (root.isDictionary() && presets.isArray())
        settings.presets = presetsFrom(presets, document, losses);
    else
        losses << QStringLiteral("it holds no presets");
    if (!losses.isEmpty())
        return Result<QNBSettings>::failure(losses.join(QStringLiteral("; ")));
    settings.showMenubar =
        PropertyList::boolValue(root.value(QNBPreferenceKey::showMenubar).toVariant()).value_or(true);
    settings.shortcutCombo = storedCombo(number(QNBPreferenceKey::hotKeyFlags).value_or(0),
                                         number(QNBPreferenceKey::hotKeyCode).value_or(0),
                                         root.value(QNBPreferenceKey::hotKeyIsPlace).toVariant());
    return settings;
}

bool wantsHelper(Preferences &preferences)
{
    const QVariant value = preferences.copyAppValue(QNBPreferenceKey::launchHelperOnStart);
    return !value.isValid() || PropertyList::boolValue(value).value_or(false);
}

QVariant configValueForKey(const std::optional<Bundle> &bundle, const QString &key)
{
    const QString path =
        bundle ? bundle->pathForResource(QStringLiteral("Info"), propertyListType, QStringLiteral(".."))
               : QString();
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    const PropertyList::ReadResult info = PropertyList::read(file.readAll());
    if (!info) {
        qCWarning(lcStore).noquote() << lineText(info.error);
        return {};
    }
    return info.value->toMap().value(key);
}

QString defaultApplicationSupport(const Bundle &bundle)
{
    return QDir(bundle.resourcePath()).filePath(defaultSupportFolder);
}

Result<> setUpApplicationSupport(const std::optional<Bundle> &bundle, const QString &supportPath)
{
    const QByteArray target = QFile::encodeName(supportPath);
    if (FileOperations::exists(target))
        return {};
    if (!bundle)
        return Result<>::failure(QStringLiteral("the pane's bundle was not found"));
    if (Result<> made = DurableFileWriter().makeFolder(QFileInfo(supportPath).path()); !made)
        return made;
    return FileOperations::copyItem(QFile::encodeName(defaultApplicationSupport(*bundle)), target);
}

} // namespace QNBSettingsStore

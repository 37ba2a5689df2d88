// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Presets.h"

#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBNumberedPresetName.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <vector>

Q_LOGGING_CATEGORY(lcPresets, "quenby.helper.presets")

namespace {

/// From the folder of the helper's executable up: out of its bundle, and out of the pane's folder for code.
const QString fromExecutableToPane = QStringLiteral("../../../../..");
const QString fromExecutableToBundle = QStringLiteral("../..");

QString tr(const char *text)
{
    return QCoreApplication::translate("Presets", text);
}

/// Of those that have this label, from 0.
QList<qsizetype> placesOf(const QList<QNBPresetRecordPtr> &presets, const QString &label)
{
    QList<qsizetype> places;
    for (qsizetype place = 0; place < presets.size(); ++place) {
        if (presets[place]->label() == label)
            places.append(place);
    }
    return places;
}

} // namespace

QString helperBundlePath()
{
    return QDir::cleanPath(QDir(QCoreApplication::applicationDirPath()).filePath(fromExecutableToBundle));
}

std::optional<Bundle> paneBundle()
{
    return paneBundle(QCoreApplication::applicationDirPath());
}

std::optional<Bundle> paneBundle(const QString &executableFolder)
{
    std::optional<Bundle> bundle =
        Bundle::bundleWithPath(QDir(executableFolder).filePath(fromExecutableToPane));
    if (bundle && bundle->bundleIdentifier() != QNBProductIdentifier())
        bundle.reset();
    return bundle;
}

Result<QNBSettings> readSettings()
{
    Result<QNBSettings> settings = QNBSettingsStore::stored(paneBundle());
    if (!settings)
        settings.error = tr("The presets cannot be read: %1").arg(settings.error);
    return settings;
}

QStringList labelsOf(const QList<QNBPresetRecordPtr> &presets)
{
    QStringList labels;
    for (const QNBPresetRecordPtr &preset : presets)
        labels.append(preset->label());
    return labels;
}

bool helperIsWanted()
{
    Preferences preferences(QNBProductIdentifier(), {.isReadOnly = true});
    return preferences.read() && QNBSettingsStore::wantsHelper(preferences);
}

QNBPresetRecordPtr presetNamed(const QList<QNBPresetRecordPtr> &presets, const QString &name, QString *error)
{
    const qlonglong number = name.mid(1).toLongLong();
    if (number >= 1 && number <= presets.size() && name == QNBNumberedPresetName(number - 1) &&
        placesOf(presets, name).isEmpty())
        return presets[number - 1];
    return presetShown(presets, name, std::nullopt, error);
}

QNBPresetRecordPtr presetShown(const QList<QNBPresetRecordPtr> &presets, const QString &label,
                               std::optional<int> position, QString *error)
{
    const QList<qsizetype> places = placesOf(presets, label);
    if (!position && places.size() > 1) {
        QStringList numbers;
        for (const qsizetype place : places)
            numbers.append(QNBNumberedPresetName(place));
        *error = tr("Several presets are called \"%1\": %2").arg(label, numbers.join(QStringLiteral(", ")));
        return {};
    }
    const qsizetype index = position.value_or(1) - 1;
    if (index >= 0 && index < places.size())
        return presets[places[index]];
    *error = places.isEmpty() ? tr("There is no preset \"%1\"").arg(label)
                              : tr("There are not so many presets \"%1\" any more").arg(label);
    return {};
}

qsizetype numberOfItems(const QNBPresetRecord &preset)
{
    qsizetype count = 0;
    std::vector<const QNBHierarchyItem *> folders;
    if (preset.fileHierarchy())
        folders.push_back(preset.fileHierarchy().get());
    while (!folders.empty()) {
        const QNBHierarchyItem &folder = *folders.back();
        folders.pop_back();
        for (const QNBHierarchyItemPtr &item : folder.children()) {
            ++count;
            folders.push_back(item.get());
        }
    }
    return count;
}

void setUpApplicationSupport()
{
    if (const Result<> made =
            QNBSettingsStore::setUpApplicationSupport(paneBundle(), QNBApplicationSupportPath());
        !made)
        qCInfo(lcPresets) << "without content files and scripts:" << made.error;
}

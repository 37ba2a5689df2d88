// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Presets.h"

#include "Shared/Source/QNBShared.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <vector>

Q_LOGGING_CATEGORY(lcPresets, "quenby.helper.presets")

namespace {

/// From the folder of the helper's executable up: out of its bundle, and out of the pane's folder for code.
const QString fromExecutableToPane = QStringLiteral("../../../../..");

/// Before the number of a preset.
const QChar numberSign = u'#';

QString tr(const char *text)
{
    return QCoreApplication::translate("Presets", text);
}

} // namespace

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

QNBPresetRecordPtr presetNamed(const QList<QNBPresetRecordPtr> &presets, const QString &name, QString *error)
{
    QList<QNBPresetRecordPtr> found;
    QStringList numbers;
    for (qsizetype i = 0; i < presets.size(); ++i) {
        if (presets[i]->label() == name) {
            found.append(presets[i]);
            numbers.append(numberSign + QString::number(i + 1));
        }
    }
    if (found.size() == 1)
        return found.constFirst();
    if (found.size() > 1) {
        *error = tr("Several presets are called \"%1\": %2").arg(name, numbers.join(QStringLiteral(", ")));
        return {};
    }
    bool isNumber = false;
    const qlonglong number = name.startsWith(numberSign) ? name.mid(1).toLongLong(&isNumber) : 0;
    if (isNumber && number >= 1 && number <= presets.size())
        return presets[number - 1];
    *error = tr("There is no preset \"%1\"").arg(name);
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

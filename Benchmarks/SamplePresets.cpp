// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/SamplePresets.h"

#include "Source/Model/QNBSettingsStore.h"

#include <array>
#include <cstdlib>
#include <deque>

namespace SamplePresets {

static QNBHierarchyItemPtr newItem(const QNBHierarchyItemPtr &parent, qsizetype preset, qsizetype number,
                                   bool isFolder)
{
    static const std::array<QString, 3> endings{QStringLiteral("txt"), QStringLiteral("psd"),
                                                QStringLiteral("indd")};
    const QString name = isFolder ? QStringLiteral("Folder %1 of project %2").arg(number).arg(preset)
                                  : QStringLiteral("project %1 document %2.%3")
                                        .arg(preset)
                                        .arg(number)
                                        .arg(endings[std::size_t(number % 3)]);
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr), parent);
    if (number % 5 == 0)
        item->setColorName(number % 10 ? QStringLiteral("red") : QStringLiteral("green"));
    if (!isFolder && number % 10 == 3)
        item->setContentFilename(QStringLiteral("Letters/Template %1.txt").arg(number % 40));
    parent->addChild(item);
    return item;
}

static QNBPresetRecordPtr preset(qsizetype number, qsizetype items)
{
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(QStringLiteral("Preset %1").arg(number), QNBPresetKey::label);
    record->setValueForKey(QStringLiteral("What preset %1 is for.").arg(number),
                           QNBPresetKey::presetDescription);
    const QNBHierarchyItemPtr root =
        QNBHierarchyItem::initWithDictionary(QNBHierarchyItem::itemDictionaryWithFilename({}, true, nullptr));
    record->setFileHierarchy(root);
    std::deque<QNBHierarchyItemPtr> folders{root};
    for (qsizetype made = 0; made < items; ++made) {
        const bool isFolder = made % 10 < 2;
        const QNBHierarchyItemPtr item = newItem(folders.front(), number, made, isFolder);
        if (isFolder)
            folders.push_back(item);
        if (folders.front()->numberOfChildren() == 10 && folders.size() > 1)
            folders.pop_front();
    }
    return record;
}

QList<QNBPresetRecordPtr> presets(qsizetype items, qsizetype itemsPerPreset)
{
    QList<QNBPresetRecordPtr> result;
    for (qsizetype made = 0; made < items; made += itemsPerPreset)
        result.append(preset(result.size(), std::min(itemsPerPreset, items - made)));
    return result;
}

QNBPresetRecordPtr flatPreset(qsizetype items)
{
    const QNBHierarchyItemPtr root =
        QNBHierarchyItem::initWithDictionary(QNBHierarchyItem::itemDictionaryWithFilename({}, true, nullptr));
    for (qsizetype made = 0; made < items; ++made) {
        const QString name = made == 0 ? QStringLiteral("Untitled") : QStringLiteral("Untitled-%1").arg(made);
        root->addChild(QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(name, false, nullptr), root));
    }
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(QStringLiteral("Flat preset"), QNBPresetKey::label);
    record->setFileHierarchy(root);
    return record;
}

qsizetype countItems(const QList<QNBPresetRecordPtr> &presets)
{
    std::vector<const QNBHierarchyItem *> toCount;
    for (const QNBPresetRecordPtr &preset : presets)
        toCount.push_back(preset->fileHierarchy().get());
    qsizetype count = -presets.size();
    while (!toCount.empty()) {
        const QNBHierarchyItem *item = toCount.back();
        toCount.pop_back();
        ++count;
        for (const QNBHierarchyItemPtr &child : item->children())
            toCount.push_back(child.get());
    }
    return count;
}

QByteArray domainBytes(const QList<QNBPresetRecordPtr> &presets)
{
    BinaryPropertyListWriter writer;
    const std::array<BinaryPropertyListWriter::Ref, 3> keys{
        writer.string(QNBPreferenceKey::launchHelperOnStart), writer.string(QNBPreferenceKey::presetsStored),
        writer.string(QNBPreferenceKey::presets)};
    std::vector<BinaryPropertyListWriter::Ref> records;
    for (const QNBPresetRecordPtr &preset : presets)
        records.push_back(preset->encode(writer));
    const std::array<BinaryPropertyListWriter::Ref, 3> values{
        writer.value(false), writer.value(QVariantMap{{QNBPreferenceKey::presetsStoredLoaded, true}}),
        writer.array(records)};
    const PropertyList::WriteResult written = writer.finish(writer.dictionary(keys, values));
    if (!written)
        qFatal("the sample presets cannot be written: %s", qPrintable(written.error));
    return *written.bytes;
}

} // namespace SamplePresets

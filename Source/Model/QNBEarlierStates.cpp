// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBEarlierStates.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QHash>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcEarlierStates, "quenby.earlierstates")

QByteArray bytesOf(const QNBPresetRecord &record)
{
    BinaryPropertyListWriter writer;
    return writer.finish(record.encode(writer)).bytes.value_or(QByteArray());
}

QStringList labelsOf(const QList<QNBPresetRecordPtr> &presets)
{
    QStringList labels;
    for (const QNBPresetRecordPtr &preset : presets)
        labels << preset->label();
    return labels;
}

} // namespace

QList<QNBEarlierState> QNBEarlierStates::all(const Preferences &preferences)
{
    QList<QNBEarlierState> result;
    for (const EarlierStates::State &state : preferences.earlierStates()) {
        const Result<QByteArray> bytes = BoundedFile::read(state.path, PropertyList::Limits::inputSize);
        const Result<QList<QNBPresetRecordPtr>> presets =
            bytes ? QNBSettingsStore::presetsOf(*bytes)
                  : Result<QList<QNBPresetRecordPtr>>::failure(bytes.error);
        if (presets)
            result.append({state.saved, *presets});
        else
            qCInfo(lcEarlierStates) << "left out:" << state.path << presets.error;
    }
    return result;
}

QNBPresetsDifference QNBEarlierStates::difference(const QList<QNBPresetRecordPtr> &now,
                                                  const QList<QNBPresetRecordPtr> &then)
{
    QNBPresetsDifference result;
    QHash<QString, QList<QNBPresetRecordPtr>> left;
    for (const QNBPresetRecordPtr &preset : now)
        left[preset->label()].append(preset);
    for (const QNBPresetRecordPtr &preset : then) {
        QList<QNBPresetRecordPtr> &same = left[preset->label()];
        if (same.isEmpty())
            result.added << preset->label();
        else if (bytesOf(*same.takeFirst()) != bytesOf(*preset))
            result.changed << preset->label();
    }
    for (const QNBPresetRecordPtr &preset : now) {
        QList<QNBPresetRecordPtr> &same = left[preset->label()];
        if (same.removeOne(preset))
            result.removed << preset->label();
    }
    result.isReordered =
        result.added.isEmpty() && result.removed.isEmpty() && labelsOf(now) != labelsOf(then);
    return result;
}

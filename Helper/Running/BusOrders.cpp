// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/BusOrders.h"

#include "Helper/Presets.h"
#include "Helper/Running/Creations.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QDir>

namespace {

Result<> checkAbsolute(const QStringList &folders)
{
    for (const QString &folder : folders) {
        if (!QDir::isAbsolutePath(folder))
            return Result<>::failure(
                QCoreApplication::translate("BusOrders", "%1 is not an absolute path").arg(folder));
    }
    return {};
}

} // namespace

Result<QList<CreationOrder>> BusOrders::creations(const HelperService::Preset &preset,
                                                  const QStringList &folders)
{
    using Orders = Result<QList<CreationOrder>>;
    const Result<QNBSettings> settings = readSettings();
    QString error = settings.error;
    const QNBPresetRecordPtr record =
        settings ? presetShown(settings->presets, preset.label, preset.position, &error) : nullptr;
    if (!record)
        return Orders::failure(error);
    if (const Result<> absolute = checkAbsolute(folders); !absolute)
        return Orders::failure(absolute.error);
    return Creations::ordersIn(folders, settings->presets.indexOf(record), record->label());
}

Result<Launcher::Content> BusOrders::launcher(const QStringList &folders)
{
    using Content = Result<Launcher::Content>;
    if (const Result<> absolute = checkAbsolute(folders); !absolute)
        return Content::failure(absolute.error);
    const Result<QNBSettings> settings = readSettings();
    return settings ? Launcher::Content{.labels = labelsOf(settings->presets), .named = folders}
                    : Launcher::Content{.problem = lineText(settings.error), .named = folders};
}

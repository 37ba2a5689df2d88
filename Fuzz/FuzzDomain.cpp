// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Fuzz/PresetChecks.h"
#include "Fuzz/PropertyListChecks.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

namespace {

const QString domain = QStringLiteral("fuzz");

QNBSettings settingsIn(const QString &folder)
{
    Preferences preferences(domain, {.folder = folder, .lockFolder = folder});
    QNBSettings settings;
    const Result<> read = QNBSettingsStore::read(preferences, {}, settings);
    PresetChecks::require(bool(read), "what was saved cannot be read");
    return settings;
}

} // namespace

/// A domain's bytes, as settings, and saved, are read again to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Every refusal is logged, and most inputs are refused.
    static const bool isQuiet = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("quenby.*=false"));
        return true;
    }();
    Q_UNUSED(isQuiet)
    const QTemporaryDir folder;
    QFile file(QDir(folder.path()).filePath(domain + QStringLiteral(".plist")));
    PresetChecks::require(file.open(QIODevice::WriteOnly) &&
                              file.write(reinterpret_cast<const char *>(data), qint64(size)) == qint64(size),
                          "the domain cannot be stored");
    file.close();

    Preferences preferences(domain, {.folder = folder.path(), .lockFolder = folder.path()});
    QNBSettings settings;
    // What cannot be read is kept aside, and saved over.
    (void)QNBSettingsStore::read(preferences, {}, settings);
    if (const Result<> written = QNBSettingsStore::write(preferences, settings); !written) {
        PresetChecks::require(PropertyListChecks::mayBeRefused(written.error), qPrintable(written.error));
        return 0;
    }
    const QNBSettings again = settingsIn(folder.path());
    PresetChecks::require(again.presets.size() == settings.presets.size(), "presets are lost");
    for (qsizetype i = 0; i < again.presets.size(); ++i)
        PresetChecks::require(PresetChecks::sameStored(*settings.presets[i], *again.presets[i]),
                              "a preset reads back otherwise");
    PresetChecks::require(again.showMenubar == settings.showMenubar &&
                              again.shortcutCombo == settings.shortcutCombo,
                          "a setting reads back otherwise");
    return 0;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneLoader.h"

#include "Hosting/ErrorPane.h"
#include "Hosting/PaneFinder.h"
#include "Platform/Desktop/Bundle.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QPluginLoader>

namespace {

Q_LOGGING_CATEGORY(lcPane, "quenby.hosting.pane")

const QString nameKey = QStringLiteral("CFBundleName");
const QString iconKey = QStringLiteral("CFBundleIconFile");
const QString executableKey = QStringLiteral("CFBundleExecutable");
const QString interfaceKey = QStringLiteral("IID");

QString tr(const char *text)
{
    return QCoreApplication::translate("PaneLoader", text);
}

std::unique_ptr<PreferencePane> failure(const QString &reason)
{
    qCWarning(lcPane).noquote() << lineText(reason);
    return std::make_unique<ErrorPane>(reason);
}

} // namespace

std::unique_ptr<PreferencePane> PaneLoader::load(const QString &bundlePath)
{
    const QString shownPath = lineText(bundlePath);
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(bundlePath);
    if (!bundle)
        return failure(PaneFinder::whyNoPane(bundlePath));
    const QVariantMap information = bundle->infoDictionary();
    if (information.isEmpty())
        return failure(tr("Contents/Info.plist of %1 is damaged.").arg(shownPath));
    const QString executable = bundle->executablePath();
    if (executable.isEmpty()) {
        const QString name = information.value(executableKey).toString();
        return failure(
            name.isEmpty()
                ? tr("Contents/Info.plist of %1 names no executable.").arg(shownPath)
                : tr("The executable of %1 is missing: Contents/MacOS/%2.").arg(shownPath, lineText(name)));
    }

    QPluginLoader loader(executable);
    loader.setLoadHints(QLibrary::PreventUnloadHint);
    // Asked before the code is mapped, so that code of another kind is never run.
    const QString interface = loader.metaData().value(interfaceKey).toString();
    if (!interface.isEmpty() && interface != QStringLiteral(QUENBY_PREFERENCE_PANE_IID))
        return failure(tr("%1 is made for another program: its code offers %2, where %3 is needed.")
                           .arg(shownPath, lineText(interface), QStringLiteral(QUENBY_PREFERENCE_PANE_IID)));
    auto *const factory = qobject_cast<PreferencePaneFactory *>(loader.instance());
    if (!factory)
        return failure(
            tr("The code of %1 cannot be loaded: %2").arg(shownPath, lineText(loader.errorString())));
    std::unique_ptr<PreferencePane> pane(factory->createPane());
    if (!pane)
        return failure(tr("The code of %1 makes no pane.").arg(shownPath));
    return pane;
}

QString PaneLoader::titleOf(const QString &bundlePath)
{
    QString title;
    if (const std::optional<Bundle> bundle = Bundle::bundleWithPath(bundlePath))
        title = bundle->infoDictionary().value(nameKey).toString();
    return lineText(title.isEmpty() ? QFileInfo(bundlePath).completeBaseName() : title);
}

QString PaneLoader::iconPathOf(const QString &bundlePath)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(bundlePath);
    return bundle ? bundle->pathForResource(bundle->infoDictionary().value(iconKey).toString(), {})
                  : QString();
}

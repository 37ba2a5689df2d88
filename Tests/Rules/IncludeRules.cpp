// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/IncludeRules.h"

#include <QDir>
#include <QMap>

namespace {

const QString platform = QStringLiteral("Platform");
const QString keyboard = QStringLiteral("Keyboard");
const QString shared = QStringLiteral("Shared/Source");
const QString core = QStringLiteral("Source/core");
const QString pane = QStringLiteral("Source");
const QString toolkit = QStringLiteral("Toolkit");
const QString hosting = QStringLiteral("Hosting");
const QString host = QStringLiteral("Host");
const QString systemSettings = QStringLiteral("SystemSettings");
const QString creation = QStringLiteral("Helper/Creation");
const QString helper = QStringLiteral("Helper");
const QString contextMenu = QStringLiteral("ContextMenu");

/// What rooms that may not use all of Toolkit use of it. For hosts that is the contract with a pane, and what
/// they show around one; for the others what windows of every kind need.
const QMap<QString, QStringList> toolkitOf = {
    {hosting,
     {QStringLiteral("Toolkit/NoticeStrip.h"), QStringLiteral("Toolkit/PlainText.h"),
      QStringLiteral("Toolkit/PreferencePane.h")}},
    {host,
     {QStringLiteral("Toolkit/FilePanel.h"), QStringLiteral("Toolkit/NoticeStrip.h"),
      QStringLiteral("Toolkit/PlainText.h"), QStringLiteral("Toolkit/PreferencePane.h"),
      QStringLiteral("Toolkit/WindowActivation.h")}},
    {systemSettings, {QStringLiteral("Toolkit/NoticeStrip.h"), QStringLiteral("Toolkit/WindowActivation.h")}},
    {helper,
     {QStringLiteral("Toolkit/EmptyState.h"), QStringLiteral("Toolkit/PlainText.h"),
      QStringLiteral("Toolkit/ReadablePlaceholders.h"), QStringLiteral("Toolkit/WindowActivation.h")}},
};

/// The classes of Source that the programs without a pane share.
const QStringList coreClasses = {QStringLiteral("HJSLoginItemController"),
                                 QStringLiteral("NSURL"),
                                 QStringLiteral("QNBChildNames"),
                                 QStringLiteral("QNBDraggedItem"),
                                 QStringLiteral("QNBEarlierStates"),
                                 QStringLiteral("QNBFolderMenu"),
                                 QStringLiteral("QNBHierarchyDepth"),
                                 QStringLiteral("QNBHierarchyItem"),
                                 QStringLiteral("QNBItemStep"),
                                 QStringLiteral("QNBLowerCase"),
                                 QStringLiteral("QNBNumberedPresetName"),
                                 QStringLiteral("QNBPermissions"),
                                 QStringLiteral("QNBPresetFile"),
                                 QStringLiteral("QNBPresetImport"),
                                 QStringLiteral("QNBPresetRecord"),
                                 QStringLiteral("QNBRecoveryFile"),
                                 QStringLiteral("QNBSettingsStore"),
                                 QStringLiteral("QNBSupportFiles"),
                                 QStringLiteral("QNBTreeSnapshot"),
                                 QStringLiteral("QNBUniqueName")};

const QMap<QString, QStringList> allowedRooms = {
    {platform, {platform}},
    {keyboard, {platform, keyboard}},
    {shared, {platform, shared}},
    {core, {platform, shared, core}},
    {pane, {platform, shared, core, pane, toolkit}},
    {toolkit, {platform, keyboard, toolkit}},
    {hosting, {platform, hosting}},
    {host, {platform, hosting, host}},
    {systemSettings, {platform, hosting, systemSettings}},
    {creation, {platform, shared, core, creation}},
    {helper, {platform, keyboard, shared, core, creation, helper}},
    {contextMenu, {platform, shared, core, contextMenu}},
};

const QMap<QString, QString> reasons = {
    {platform, QStringLiteral("Platform stands for the desktop: it knows no other room, so that every rule "
                              "above it can be tested without a desktop.")},
    {keyboard,
     QStringLiteral("Keyboard tells what the user's layouts make of keys: it knows Platform only.")},
    {shared, QStringLiteral("Shared/Source is what the helper and the context-menu plug-in share with the "
                            "pane: it may use Platform only.")},
    {core, QStringLiteral("The model, the store and preset files are used by programs that have no window: "
                          "they may use Platform and Shared/Source only.")},
    {pane, QStringLiteral("The pane uses Platform, Shared/Source and Toolkit; the host finds it through a "
                          "plug-in and is never known to it.")},
    {toolkit, QStringLiteral("Toolkit holds views that know nothing of presets: what they show and ask for "
                             "comes through data sources and delegates.")},
    {hosting,
     QStringLiteral("Hosts drive any pane: they know Toolkit/PreferencePane.h, what every host shows "
                    "around a pane, and Platform, never the pane itself or its views.")},
    {host, QStringLiteral("The host drives any pane: it knows Hosting, Toolkit/PreferencePane.h, what stands "
                          "around a pane, and Platform, never the pane itself or its views.")},
    {systemSettings, QStringLiteral("The module shows the pane as any host does: it knows Hosting, Platform "
                                    "and what stands around a pane, never the pane itself.")},
    {creation, QStringLiteral("What creates the structures works without the helper around it: it uses the "
                              "model, Shared/Source and Platform only.")},
    {helper,
     QStringLiteral("The helper uses the model, Shared/Source, Keyboard and Platform, of Toolkit what "
                    "every window needs, never the pane.")},
    {contextMenu, QStringLiteral("The context-menu plug-in uses the model, Shared/Source and Platform, never "
                                 "the pane.")},
};

QString describe(const SourceFile &file, const Include &include, const QString &reason)
{
    return QStringLiteral("%1:%2 includes %3. %4")
        .arg(file.path, QString::number(include.line), include.target, reason);
}

} // namespace

QString IncludeRules::roomOf(const QString &path)
{
    const QString folder = path.section(u'/', 0, 0);
    if (folder == u"Shared")
        return shared;
    if (path.startsWith(creation + u'/'))
        return creation;
    if (folder == pane) {
        const QString name = path.section(u'/', -1).section(u'.', 0, 0).section(u'+', 0, 0);
        return coreClasses.contains(name) ? core : pane;
    }
    return allowedRooms.contains(folder) ? folder : QString();
}

QStringList IncludeRules::violationsOfDirection(const SourceFile &file)
{
    const QString room = roomOf(file.path);
    if (room.isEmpty())
        return {};
    QStringList violations;
    for (const Include &include : includesOf(file)) {
        const bool namesAFolder = include.target.contains(u'/');
        const QString path =
            include.isQuoted && !namesAFolder ? file.folder() + u'/' + include.target : include.target;
        const QString target = roomOf(path);
        if (path.startsWith(u"Tests/") || path.contains(u".."))
            violations.append(describe(file, include,
                                       QStringLiteral("Code includes by the path from the top "
                                                      "of the tree, and never a test's.")));
        else if (!target.isEmpty() && !allowedRooms[room].contains(target) &&
                 !toolkitOf.value(room).contains(path))
            violations.append(describe(file, include, reasons[room]));
    }
    return violations;
}

QStringList IncludeRules::violationsOfCoreWithoutWidgets(const SourceFile &file,
                                                         const QSet<QString> &widgetHeaders)
{
    const QString room = roomOf(file.path);
    static const QStringList rooms = {platform, shared, core, creation, contextMenu};
    if (!rooms.contains(room))
        return {};
    static const QSet<QString> modules = {QStringLiteral("QtGui"), QStringLiteral("QtWidgets"),
                                          QStringLiteral("QtSvg")};
    QStringList violations;
    for (const Include &include : includesOf(file)) {
        if (modules.contains(include.target.section(u'/', 0, 0)) || widgetHeaders.contains(include.target))
            violations.append(
                describe(file, include,
                         QStringLiteral("The core has no widgets: it links Qt Core only, so that "
                                        "the helper and every test can use it without a screen. "
                                        "What is drawn belongs to Toolkit or to the pane.")));
    }
    return violations;
}

QSet<QString> IncludeRules::widgetHeaders()
{
    QSet<QString> names;
    for (const QString &folder : QStringLiteral(QUENBY_WIDGET_INCLUDE_FOLDERS).split(u':')) {
        const QStringList headers = QDir(folder).entryList(QDir::Files);
        names.unite(QSet<QString>(headers.begin(), headers.end()));
    }
    return names;
}

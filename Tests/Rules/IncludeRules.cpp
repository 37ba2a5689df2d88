// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/IncludeRules.h"

#include <QDir>

#include <algorithm>

namespace {

/// A room, and what its files may include.
struct Room
{
    /// The folder, from the top of the tree.
    QString path;
    /// Rooms; "Platform/" is Platform with all rooms below it.
    QStringList known;
    /// Of rooms that are not known as a whole.
    QStringList knownHeaders;
    /// Why; follows an include that is not allowed.
    QString reason;
};

QStringList names(std::initializer_list<const char *> latin1)
{
    QStringList result;
    for (const char *name : latin1)
        result.append(QString::fromLatin1(name));
    return result;
}

const QList<Room> &allRooms()
{
    static const auto room = [](const char *path, QStringList known, const char *reason,
                                QStringList headers = {}) {
        const QString name = QString::fromLatin1(path);
        return Room{name, known << name, headers, QString::fromLatin1(reason)};
    };
    static const char platformReason[] = "Platform stands for the desktop: it knows no other room, so that "
                                         "every rule above it can be tested without "
                                         "a desktop. Its rooms build on each other: Files, then Bus, "
                                         "Processes and PropertyLists, then Desktop, then "
                                         "Preferences.";
    static const char sourceReason[] =
        "The rooms of the pane build on each other: Model, then Editing and System, then Pane, which knows "
        "Controls too. The host finds the pane through a plug-in and is never known to it.";
    static const QList<Room> rooms = {
        room("Platform", {}, platformReason),
        room("Platform/Files", names({"Platform"}), platformReason),
        room("Platform/Bus", names({"Platform", "Platform/Files"}), platformReason),
        room("Platform/Processes", names({"Platform", "Platform/Files"}), platformReason),
        room("Platform/PropertyLists", names({"Platform", "Platform/Files"}), platformReason),
        room("Platform/Desktop",
             names({"Platform", "Platform/Files", "Platform/Bus", "Platform/Processes",
                    "Platform/PropertyLists"}),
             platformReason),
        room("Platform/Preferences", names({"Platform/"}), platformReason),
        room("Keyboard", names({"Platform/"}),
             "Keyboard tells what the user's layouts make of keys: it knows Platform only."),
        room("Shared/Source", names({"Platform/"}),
             "Shared/Source is what the helper and the context-menu plug-in share with the pane: it may use "
             "Platform "
             "only."),
        room("Toolkit", names({"Platform/", "Keyboard"}),
             "Toolkit holds views that know nothing of presets: what they show and ask for comes through "
             "data sources "
             "and delegates."),
        room("Source/Model", names({"Platform/", "Shared/Source"}),
             "The model, the store and preset files are used by programs that have no window: they may use "
             "Platform "
             "and Shared/Source only."),
        room("Source/Controls", names({"Platform/", "Toolkit"}), sourceReason),
        room("Source/Editing", names({"Platform/", "Shared/Source", "Toolkit", "Source/Model"}),
             sourceReason),
        room("Source/System", names({"Platform/", "Shared/Source", "Toolkit", "Source/Model"}), sourceReason),
        room("Source/Pane", names({"Platform/", "Shared/Source", "Toolkit", "Source/"}), sourceReason),
        room("Hosting", names({"Platform/"}),
             "Hosts drive any pane: they know Toolkit/PreferencePane.h, what every host shows around a pane, "
             "and "
             "Platform, never the pane itself or its views.",
             names({"Toolkit/NoticeStrip.h", "Toolkit/PlainText.h", "Toolkit/PreferencePane.h"})),
        room("Host", names({"Platform/", "Hosting"}),
             "The host drives any pane: it knows Hosting, Toolkit/PreferencePane.h, what stands around a "
             "pane, and "
             "Platform, never the pane itself or its views.",
             names({"Toolkit/FilePanel.h", "Toolkit/NoticeStrip.h", "Toolkit/PlainText.h",
                    "Toolkit/PreferencePane.h", "Toolkit/WindowActivation.h"})),
        room("SystemSettings", names({"Platform/", "Hosting"}),
             "The module shows the pane as any host does: it knows Hosting, Platform and what stands around "
             "a pane, "
             "never the pane itself.",
             names({"Toolkit/NoticeStrip.h", "Toolkit/WindowActivation.h"})),
        room("Helper/Creation", names({"Platform/", "Shared/Source", "Source/Model"}),
             "What creates the structures works without the helper around it: it uses the model, "
             "Shared/Source and "
             "Platform only."),
        room("Helper", names({"Platform/", "Keyboard", "Shared/Source", "Source/Model", "Helper/"}),
             "The helper uses the model, Shared/Source, Keyboard and Platform, of Toolkit what every window "
             "needs, "
             "never the pane.",
             names({"Toolkit/EmptyState.h", "Toolkit/PlainText.h", "Toolkit/ReadablePlaceholders.h",
                    "Toolkit/WindowActivation.h"})),
        room("ContextMenu", names({"Platform/", "Shared/Source", "Source/Model"}),
             "The context-menu plug-in uses the model, Shared/Source and Platform, never the pane."),
    };
    return rooms;
}

bool isInside(const QString &path, const QString &folder)
{
    return path.startsWith(folder + u'/');
}

/// The innermost room that holds \a path; none if it is in no room.
const Room *roomWith(const QString &path)
{
    const Room *found = nullptr;
    for (const Room &room : allRooms()) {
        if (isInside(path, room.path) && (!found || room.path.size() > found->path.size()))
            found = &room;
    }
    return found;
}

/// Whether \a path belongs below a folder with rooms, though to none of them.
bool isHomeless(const QString &path)
{
    return !roomWith(path) && std::any_of(allRooms().begin(), allRooms().end(), [&path](const Room &room) {
        return isInside(path, room.path.section(u'/', 0, 0));
    });
}

bool knows(const Room &room, const QString &target)
{
    return std::any_of(room.known.begin(), room.known.end(), [&target](const QString &known) {
        return known == target || (known.endsWith(u'/') && (target + u'/').startsWith(known));
    });
}

QString describe(const SourceFile &file, const Include &include, const QString &reason)
{
    return QStringLiteral("%1:%2 includes %3. %4")
        .arg(file.path, QString::number(include.line), include.target, reason);
}

} // namespace

QString IncludeRules::roomOf(const QString &path)
{
    const Room *room = roomWith(path);
    return room ? room->path : QString();
}

QStringList IncludeRules::violationsOfDirection(const SourceFile &file)
{
    const Room *room = roomWith(file.path);
    const bool isCode = file.path.endsWith(u".h") || file.path.endsWith(u".cpp");
    if (!room && isCode && isHomeless(file.path))
        return {QStringLiteral("%1 is in none of the rooms that IncludeRules.cpp names.").arg(file.path)};
    if (!room)
        return {};
    QStringList violations;
    for (const Include &include : includesOf(file)) {
        const bool namesAFolder = include.target.contains(u'/');
        const QString path =
            include.isQuoted && !namesAFolder ? file.folder() + u'/' + include.target : include.target;
        const QString target = roomOf(path);
        const bool isRelative = include.isQuoted && namesAFolder &&
                                !SourceTree::folders().contains(include.target.section(u'/', 0, 0));
        if (path.startsWith(u"Tests/") || path.contains(u"..") || isRelative)
            violations.append(describe(file, include,
                                       QStringLiteral("Code includes by the path from the top "
                                                      "of the tree, and never a test's.")));
        else if (isHomeless(path) ||
                 (!target.isEmpty() && !knows(*room, target) && !room->knownHeaders.contains(path)))
            violations.append(describe(file, include, room->reason));
    }
    return violations;
}

QStringList IncludeRules::violationsOfCoreWithoutWidgets(const SourceFile &file,
                                                         const QSet<QString> &widgetHeaders)
{
    const QString room = roomOf(file.path);
    static const QStringList rooms =
        names({"Platform", "Shared/Source", "Source/Model", "Helper/Creation", "ContextMenu"});
    if (!rooms.contains(room) && !isInside(room, rooms.constFirst()))
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

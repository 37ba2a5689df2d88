// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PresetMenu.h"

#include "Source/QNBFolderMenu.h"

#include <QLoggingCategory>
#include <QSet>

namespace {

Q_LOGGING_CATEGORY(lcPresetMenu, "quenby.contextmenu.presets")

const QByteArray createOption = QByteArrayLiteral("--create");
const QByteArray notifyOption = QByteArrayLiteral("--notify");

/// The kernel takes 128 KiB as one argument; quoting may make four bytes of one, and some file managers hand
/// the whole line to a shell as one argument.
constexpr qsizetype longestLabel = 16 * 1024;
/// In UTF-16 units; a wider menu is none.
constexpr qsizetype longestTitle = 80;

QString titleOf(const QString &label)
{
    const QString line = QNBFolderMenu::shownPath(label).trimmed();
    if (line.isEmpty())
        return QStringLiteral("(no name)");
    if (line.size() <= longestTitle)
        return line;
    qsizetype end = longestTitle - 1;
    if (line.at(end - 1).isHighSurrogate())
        --end;
    return line.left(end) + u'…';
}

} // namespace

const QByteArray PresetMenu::folderOption = QByteArrayLiteral("--in");
const QString PresetMenu::title = QStringLiteral("Quenby");
const QString PresetMenu::icon = QStringLiteral("folder-new");

PresetMenu PresetMenu::of(const QList<QNBPresetRecordPtr> &presets, const QByteArray &helper)
{
    PresetMenu menu;
    menu.helper = helper;
    QSet<QString> seen;
    for (const QNBPresetRecordPtr &preset : presets) {
        const QString label = preset->label();
        if (seen.contains(label))
            continue;
        seen.insert(label);
        const QByteArray bytes = label.toUtf8();
        if (bytes.size() > longestLabel || label.contains(QChar::Null) || QString::fromUtf8(bytes) != label) {
            qCWarning(lcPresetMenu) << "not in the menu, its name cannot be passed on:"
                                    << label.left(longestTitle);
            continue;
        }
        menu.items.append({bytes, titleOf(label)});
    }
    return menu;
}

QByteArrayList PresetMenu::commandLine(const Item &item) const
{
    return {helper, createOption, item.label, notifyOption};
}

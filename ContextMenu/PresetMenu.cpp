// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PresetMenu.h"
#include "Platform/LineText.h"

#include <QHash>

namespace {

const QByteArray createOption = QByteArrayLiteral("--create");
const QByteArray positionOption = QByteArrayLiteral("--position");
const QByteArray launcherOption = QByteArrayLiteral("--launcher");
const QByteArray notifyOption = QByteArrayLiteral("--notify");

/// The kernel takes 128 KiB as one argument; quoting may make four bytes of one, and some file managers hand
/// the whole line to a shell as one argument.
constexpr qsizetype longestLabel = qsizetype(16) * 1024;
/// In UTF-16 units; a wider menu is none.
constexpr qsizetype longestTitle = 80;

QString titleOf(const QString &label)
{
    QString line = lineText(label).trimmed();
    if (line.isEmpty())
        return QStringLiteral("(no name)");
    if (line.size() <= longestTitle)
        return line;
    qsizetype end = longestTitle - 1;
    if (line.at(end - 1).isHighSurrogate())
        --end;
    return line.left(end) + u'…';
}

bool canBePassed(const QString &label)
{
    const QByteArray bytes = label.toUtf8();
    return bytes.size() <= longestLabel && !bytes.contains('\0') && QString::fromUtf8(bytes) == label;
}

} // namespace

const QByteArray PresetMenu::folderOption = QByteArrayLiteral("--in");
const QString PresetMenu::title = QStringLiteral("Quenby");
const QString PresetMenu::moreTitle = QStringLiteral("More…");
const QString PresetMenu::icon = QStringLiteral("folder-new");

PresetMenu PresetMenu::of(const QList<QNBPresetRecordPtr> &presets, const QByteArray &helper)
{
    PresetMenu menu;
    menu.helper = helper;
    const QByteArrayList more = {launcherOption, notifyOption};
    QHash<QString, int> positions;
    for (const QNBPresetRecordPtr &preset : presets) {
        const QString label = preset->label();
        const QByteArray position = QByteArray::number(++positions[label]);
        menu.items.append({titleOf(label), canBePassed(label)
                                               ? QByteArrayList{createOption, label.toUtf8(), positionOption,
                                                                position, notifyOption}
                                               : more});
    }
    menu.items.append({moreTitle, more});
    return menu;
}

QByteArrayList PresetMenu::commandLine(const Item &item) const
{
    return QByteArrayList{helper} + item.arguments;
}

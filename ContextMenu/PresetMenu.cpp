// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PresetMenu.h"
#include "Platform/LineText.h"

#include <QHash>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcPresetMenu, "quenby.contextmenu.presets")

const QByteArray createOption = QByteArrayLiteral("--create");
const QByteArray notifyOption = QByteArrayLiteral("--notify");

/// Stands before the number of a preset.
constexpr QChar numberSign = u'#';

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
const QString PresetMenu::icon = QStringLiteral("folder-new");

PresetMenu PresetMenu::of(const QList<QNBPresetRecordPtr> &presets, const QByteArray &helper)
{
    PresetMenu menu;
    menu.helper = helper;
    QHash<QString, int> labels;
    for (const QNBPresetRecordPtr &preset : presets)
        ++labels[preset->label()];
    for (qsizetype index = 0; index < presets.size(); ++index) {
        const QString label = presets.at(index)->label();
        const QString number = numberSign + QString::number(index + 1);
        const bool isUsable = labels.value(label) == 1 && canBePassed(label);
        if (!isUsable && labels.contains(number)) {
            qCWarning(lcPresetMenu) << "not in the menu, nothing names it:" << titleOf(label);
            continue;
        }
        menu.items.append({(isUsable ? label : number).toUtf8(), titleOf(label)});
    }
    return menu;
}

QByteArrayList PresetMenu::commandLine(const Item &item) const
{
    return {helper, createOption, item.name, notifyOption};
}

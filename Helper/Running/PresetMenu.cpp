// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PresetMenu.h"

#include "Helper/ShownName.h"

#include <QCoreApplication>
#include <QDir>

#include <utility>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PresetMenu", text);
}

/// Before a menu goes: what was made of its actions for the tray is freed only when they are taken out.
void takeOutActions(QMenu &menu)
{
    for (QAction *action : menu.actions())
        menu.removeAction(action);
}

} // namespace

PresetMenu::PresetMenu(MenuText::Reader reader, Handlers handlers)
    : reader_(reader)
    , handlers_(std::move(handlers))
    , separator_(menu_.addSeparator())
    , undo_(menu_.addAction(tr("Undo Last Creation")))
{
    QObject::connect(undo_, &QAction::triggered, &menu_, [this] { handlers_.undo(); });
    QObject::connect(menu_.addAction(tr("Open Quenby…")), &QAction::triggered, &menu_,
                     [this] { handlers_.openPane(); });
    QObject::connect(menu_.addAction(tr("Quit")), &QAction::triggered, &menu_, [this] { handlers_.quit(); });
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { handlers_.aboutToShow(*this); });
    rebuildPresets();
}

PresetMenu::~PresetMenu()
{
    for (const QAction *entry : entries_) {
        if (entry->menu())
            takeOutActions(*entry->menu());
    }
    takeOutActions(menu_);
}

void PresetMenu::setContent(const QStringList &labels, const QStringList &folders, bool areKnown)
{
    if (labels == labels_ && folders == folders_ && (areKnown == areKnown_ || !labels.isEmpty()))
        return;
    areKnown_ = areKnown;
    labels_ = labels;
    folders_ = folders;
    rebuildPresets();
}

void PresetMenu::rebuildPresets()
{
    for (QAction *entry : std::exchange(entries_, {})) {
        menu_.removeAction(entry);
        // The menu of a preset owns its entry. It may be the one that is being answered.
        if (QMenu *const menu = entry->menu()) {
            takeOutActions(*menu);
            menu->deleteLater();
        } else {
            entry->deleteLater();
        }
    }
    for (qsizetype i = 0; i < labels_.size(); ++i) {
        auto *folders = new QMenu(text(labels_[i]), &menu_);
        fill(*folders, i);
        entries_.push_back(folders->menuAction());
    }
    if (labels_.isEmpty()) {
        entries_.push_back(
            new QAction(areKnown_ ? tr("No Presets") : tr("The Presets Cannot Be Read"), &menu_));
        entries_.back()->setEnabled(false);
    }
    for (QAction *entry : entries_)
        menu_.insertAction(separator_, entry);
}

void PresetMenu::fill(QMenu &menu, qsizetype preset)
{
    for (const QString &folder : std::as_const(folders_)) {
        QObject::connect(menu.addAction(text(ShownName::ofFolder(folder))), &QAction::triggered, &menu_,
                         [this, preset, folder] { handlers_.create(preset, folder); });
    }
    if (!folders_.isEmpty())
        menu.addSeparator();
    QObject::connect(menu.addAction(tr("Choose…")), &QAction::triggered, &menu_,
                     [this, preset] { handlers_.chooseFolder(preset); });
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/FolderMenu.h"

#include "Helper/Running/MenuText.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("FolderMenu", text);
}

QString heading(const QStringList &folders)
{
    return folders.size() == 1 ? tr("Create in %1:")
                                     .arg(MenuText::forName(MenuText::shownFolder(folders.constFirst()),
                                                            MenuText::Reader::Library))
                               : tr("Create in %1 folders:").arg(folders.size());
}

} // namespace

FolderMenu::FolderMenu(const QStringList &labels, const QStringList &folders, const Handlers &handlers)
{
    menu_.addAction(heading(folders))->setEnabled(false);
    menu_.addSeparator();
    for (qsizetype place = 0; place < labels.size(); ++place) {
        const QString &label = labels[place];
        const QAction *const entry = menu_.addAction(MenuText::forName(label, MenuText::Reader::Library));
        QObject::connect(entry, &QAction::triggered, &menu_,
                         [create = handlers.create, place, label] { create(place, label); });
    }
    if (labels.isEmpty())
        menu_.addAction(tr("No Presets"))->setEnabled(false);
    menu_.addSeparator();
    QObject::connect(menu_.addAction(tr("Open Quenby…")), &QAction::triggered, &menu_, handlers.openPane);
}

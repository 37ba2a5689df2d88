// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/PaneChooser.h"

#include "Hosting/PaneLoader.h"
#include "Toolkit/PlainText.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

namespace {

constexpr int pathRole = Qt::UserRole;

} // namespace

PaneChooser::PaneChooser(const QStringList &panePaths, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("paneChooser"));
    auto *const list = new QListWidget;
    list->setObjectName(QStringLiteral("paneList"));
    list->setAccessibleName(tr("Settings panes"));
    for (const QString &path : panePaths) {
        auto *const item = new QListWidgetItem(PaneLoader::titleOf(path), list);
        item->setData(pathRole, path);
        item->setToolTip(PlainText::toolTip(path));
    }
    list->setCurrentRow(0);
    connect(list, &QListWidget::itemActivated, this, &PaneChooser::activate);

    QLabel *const label = PlainText::label(tr("&Choose a settings pane:"));
    label->setBuddy(list);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(list);
    setFocusProxy(list);
}

void PaneChooser::activate(const QListWidgetItem *item)
{
    Q_EMIT chosen(item->data(pathRole).toString());
}

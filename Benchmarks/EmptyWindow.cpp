// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The least that a settings program can show, as the measure for the host's start: an empty window with a
// list, a tree and a form.

#include "Host/FirstPaintReport.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QTreeWidget>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    auto *central = new QWidget;
    auto *row = new QHBoxLayout(central);
    row->addWidget(new QListWidget);
    row->addWidget(new QTreeWidget);
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Name"), new QLineEdit);
    form->addRow(QStringLiteral("Description"), new QLineEdit);
    row->addLayout(form);
    window.setCentralWidget(central);
    window.resize(900, 600);
    FirstPaintReport::installIfRequested(&window, [] { QCoreApplication::quit(); });
    window.show();
    return QApplication::exec();
}

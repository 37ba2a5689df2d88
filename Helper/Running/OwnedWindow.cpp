// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/OwnedWindow.h"

#include <QDialog>

void OwnedWindow::show(QDialog *dialog, QObject *owner)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Not a child: it is a window of its own, and the owner is none.
    QObject::connect(owner, &QObject::destroyed, dialog, [dialog] { delete dialog; });
    dialog->setModal(false);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

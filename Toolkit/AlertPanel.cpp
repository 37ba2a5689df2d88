// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/AlertPanel.h"

#include "Toolkit/PlainText.h"

#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

AlertPanel::Answer AlertPanel::run(QWidget *parent) const
{
    // Held by a pointer because its window may go, and the box with it, while the user thinks.
    const QPointer<QMessageBox> box = PlainText::messageBox(title, title, message, parent);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->setAccessibleName(box->text());
    box->setAccessibleDescription(box->informativeText());
    for (QLabel *label : box->findChildren<QLabel *>()) {
        if (!label->text().isEmpty())
            label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }

    QPushButton *defaultOne = defaultButton.isEmpty()
                                  ? box->addButton(QMessageBox::Ok)
                                  : box->addButton(defaultButton, QMessageBox::AcceptRole);
    QPushButton *alternate =
        alternateButton.isEmpty() ? nullptr : box->addButton(alternateButton, QMessageBox::RejectRole);
    QPushButton *other =
        otherButton.isEmpty() ? nullptr : box->addButton(otherButton, QMessageBox::ActionRole);
    box->setDefaultButton(defaultOne);
    box->setEscapeButton(alternate ? alternate : defaultOne);

    box->exec();
    const QAbstractButton *clicked = box ? box->clickedButton() : nullptr;
    delete box;
    if (!clicked)
        return Answer::None;
    if (clicked == other)
        return Answer::Other;
    return clicked == alternate ? Answer::Alternate : Answer::Default;
}

AlertPanel::Runner AlertPanel::runner()
{
    return [](QWidget *parent, const AlertPanel &alert) { return alert.run(parent); };
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/LineText.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QString>

/// The one way to put a text into a window where it could be taken for markup: it is shown as it is, with
/// every character of it. Names come from strangers, whose headings, pictures and links are not to be seen.
namespace PlainText {

/// Belongs to \a parent, or to the layout that it is put into.
inline QLabel *label(const QString &text, QWidget *parent = nullptr)
{
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setText(linesText(text));
    return label;
}

/// \a text as a tool tip: its lines, each on several if it is long.
inline QString toolTip(const QString &text)
{
    return QStringLiteral("<span>%1</span>")
        .arg(linesText(text).toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
}

/// A warning without buttons: \a heading, and below it \a text.
inline QMessageBox *messageBox(const QString &title, const QString &heading, const QString &text,
                               QWidget *parent = nullptr)
{
    auto *box = new QMessageBox(parent);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(lineText(title));
    box->setText(lineText(heading));
    box->setInformativeText(linesText(text));
    // All of them: the format of the box is that of the heading only.
    for (QLabel *label : box->findChildren<QLabel *>())
        label->setTextFormat(Qt::PlainText);
    return box;
}

/// Without a maximum it shows that something goes on.
inline QProgressDialog *progressDialog(const QString &text, const QString &cancelTitle, int maximum = 0,
                                       QWidget *parent = nullptr)
{
    auto *dialog = new QProgressDialog(QString(), cancelTitle, 0, maximum, parent);
    dialog->setLabel(label(text));
    return dialog;
}

} // namespace PlainText

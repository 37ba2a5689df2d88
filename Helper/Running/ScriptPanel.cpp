// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ScriptPanel.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr QSize usualSize(640, 480);

QString translated(const char *text)
{
    return QCoreApplication::translate("ScriptPanel", text);
}

QLabel *plainLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

ScriptPanel::ScriptPanel(const CreationOrder &order, const Script &script,
                         std::function<void(bool mayRun)> answered)
{
    setWindowTitle(translated("Run the Script?"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(plainLabel(translated("The preset \"%1\" wants to run the script %2 in %3. It says:")
                                     .arg(order.label, script.path(), order.folder)));
    auto *content = new QPlainTextEdit(script.shownContent());
    content->setReadOnly(true);
    content->setLineWrapMode(QPlainTextEdit::NoWrap);
    content->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    content->setAccessibleName(translated("Content of the script"));
    layout->addWidget(content);
    layout->addWidget(
        plainLabel(translated("Once you allow it, it runs now and from now on without being asked about "
                              "until it changes. Allow only what you understand or trust.")));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Yes | QDialogButtonBox::No);
    buttons->button(QDialogButtonBox::Yes)->setText(translated("&Run the Script"));
    buttons->button(QDialogButtonBox::Yes)->setAutoDefault(false);
    buttons->button(QDialogButtonBox::No)->setText(translated("&Do Not Run"));
    buttons->button(QDialogButtonBox::No)->setDefault(true);
    buttons->button(QDialogButtonBox::No)->setFocus();
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::finished, this,
            [answered = std::move(answered)](int result) { answered(result == Accepted); });
    resize(usualSize);
}

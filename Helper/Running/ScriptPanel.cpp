// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ScriptPanel.h"

#include "Platform/LineText.h"
#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLocale>
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

QLabel *wrapped(QLabel *label)
{
    label->setWordWrap(true);
    return label;
}

} // namespace

ScriptPanel::ScriptPanel(const CreationOrder &order, const Script &script,
                         std::function<void(bool mayRun)> answered)
{
    setWindowTitle(translated("Run the Script?"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(wrapped(
        PlainText::label(translated("The preset \"%1\" wants to run the script %2 in %3. It says:")
                             .arg(lineText(order.label), lineText(script.path()), lineText(order.folder)))));
    // Wrapped: what blanks push to the right is not out of sight.
    auto *content = new QPlainTextEdit(script.shownContent());
    content->setReadOnly(true);
    content->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    content->setAccessibleName(translated("Content of the script"));
    layout->addWidget(content);
    // So that what line ends push down is not, either.
    layout->addWidget(
        PlainText::label(translated("Lines: %1").arg(QLocale().toString(content->document()->blockCount()))));
    layout->addWidget(wrapped(PlainText::label(
        translated("Once you allow it, it runs now and from now on without being asked about "
                   "until it changes. Allow only what you understand or trust."))));
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

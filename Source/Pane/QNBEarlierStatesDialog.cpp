// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBEarlierStatesDialog.h"

#include "Platform/LineText.h"
#include "Source/Controls/QNBShownTime.h"
#include "Toolkit/PlainText.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QListWidget>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// In characters and lines of the desktop's font.
constexpr int comfortableWidth = 56;
constexpr int listLines = 8;
constexpr int differenceLines = 6;

} // namespace

QNBEarlierStatesDialog::Runner QNBEarlierStatesDialog::runner()
{
    return [](QWidget *parent, const QList<QNBEarlierState> &states,
              const QList<QNBPresetRecordPtr> &presets) -> std::optional<QNBEarlierState> {
        // Held by a pointer because its window may go, and the dialog with it, while the user thinks.
        const QPointer<QNBEarlierStatesDialog> dialog = new QNBEarlierStatesDialog(states, presets, parent);
        dialog->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
        const int answer = dialog->exec();
        const std::optional<QNBEarlierState> chosen =
            dialog && answer == QDialog::Accepted ? dialog->chosen() : std::nullopt;
        delete dialog;
        return chosen;
    };
}

QNBEarlierStatesDialog::QNBEarlierStatesDialog(const QList<QNBEarlierState> &states,
                                               const QList<QNBPresetRecordPtr> &presets, QWidget *parent)
    : QDialog(parent)
    , states_(states)
    , presets_(presets)
    , list_(new QListWidget(this))
    , difference_(new QPlainTextEdit(this))
{
    setWindowTitle(tr("Restore an Earlier State"));
    const QFontMetrics metrics(font());
    const int line = metrics.lineSpacing();
    const int width = comfortableWidth * metrics.averageCharWidth();

    QLabel *explanation = PlainText::label(
        states_.isEmpty()
            ? tr("There are no earlier states yet. They are kept when changes are saved.")
            : tr("The list of presets gives way to the one that you choose. You can undo this."),
        this);
    explanation->setWordWrap(true);
    explanation->setMinimumWidth(width);

    for (const QNBEarlierState &state : states_) {
        const auto count = static_cast<int>(state.presets.size());
        const QString text = count == 1 ? tr("%1 – one preset") : tr("%1 – %n presets", nullptr, count);
        list_->addItem(text.arg(QNBShownTime(state.saved)));
    }
    list_->setObjectName(QStringLiteral("earlierStates"));
    list_->setAccessibleName(tr("Earlier states"));
    list_->setMinimumHeight(listLines * line);
    list_->setHidden(states_.isEmpty());

    difference_->setObjectName(QStringLiteral("difference"));
    difference_->setAccessibleName(tr("What restoring changes"));
    difference_->setReadOnly(true);
    difference_->setTabChangesFocus(true);
    difference_->setMinimumHeight(differenceLines * line);
    difference_->setHidden(states_.isEmpty());

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    restore_ = buttons->addButton(tr("Restore"), QDialogButtonBox::AcceptRole);
    restore_->setDefault(true);
    restore_->setEnabled(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::currentRowChanged, this, &QNBEarlierStatesDialog::showDifference);
    connect(list_, &QListWidget::itemDoubleClicked, restore_, &QPushButton::click);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(explanation);
    layout->addWidget(list_, 1);
    layout->addWidget(difference_, 1);
    layout->addWidget(buttons);
    list_->setCurrentRow(states_.isEmpty() ? -1 : 0);
    (states_.isEmpty() ? static_cast<QWidget *>(buttons->button(QDialogButtonBox::Cancel)) : list_)
        ->setFocus();
}

std::optional<QNBEarlierState> QNBEarlierStatesDialog::chosen() const
{
    const int row = list_->currentRow();
    return row >= 0 ? std::optional(states_[row]) : std::nullopt;
}

void QNBEarlierStatesDialog::showDifference(int row)
{
    if (row < 0)
        return;
    const QNBPresetsDifference difference = QNBEarlierStates::difference(presets_, states_[row].presets);
    const QLocale locale;
    QStringList lines;
    const auto add = [&](const QString &sentence, const QStringList &labels) {
        if (labels.isEmpty())
            return;
        QStringList shown;
        for (const QString &label : labels)
            shown << lineText(label);
        lines << sentence.arg(locale.createSeparatedList(shown));
    };
    add(tr("Comes back: %1"), difference.added);
    add(tr("Goes: %1"), difference.removed);
    add(tr("Becomes as it was: %1"), difference.changed);
    if (difference.isReordered)
        lines << tr("The presets stand in another order.");
    if (difference.isNone())
        lines << tr("These are the presets as they are now.");
    difference_->setPlainText(lines.join(u'\n'));
    restore_->setEnabled(!difference.isNone());
}

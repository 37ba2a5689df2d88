// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBPrefPanePref.h"

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTextDocument>

namespace {

constexpr int descriptionPaneHeight = 130;

} // namespace

void QNBPrefPanePref::showHideDescriptionPane(Qt::CheckState state)
{
    if (state == Qt::PartiallyChecked)
        return;
    const int height = _leftColumnSplit->height();
    const int divider = state == Qt::Checked ? std::max(0, height - descriptionPaneHeight) : height;
    _leftColumnSplit->setSizes({divider, std::max(0, height - divider - _leftColumnSplit->handleWidth())});
}

bool QNBPrefPanePref::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == _leftColumnSplit && event->type() == QEvent::Resize && !_descriptionPaneIsPlaced) {
        _descriptionPaneIsPlaced = true;
        showHideDescriptionPane(_descriptionToggle->checkState());
    }
    if (watched == _ui_websiteLink && event->type() == QEvent::PaletteChange)
        showWebsiteLink();
    return QObject::eventFilter(watched, event);
}

void QNBPrefPanePref::showDescription()
{
    const QSignalBlocker blocker(_ui_presetDescription);
    const QVariant description =
        _selectedItem ? _selectedItem->valueForKey(QNBPresetKey::presetDescription) : QVariant();
    _ui_presetDescription->setPlainText(description.toString());
    _ui_presetDescription->setEnabled(_selectedItem != nullptr);
    _ui_presetDescription->setPlaceholderText(_selectedItem ? tr("What is this preset for?")
                                                            : tr("No preset selected"));
}

void QNBPrefPanePref::descriptionTextDidChange()
{
    if (!_selectedItem)
        return;
    // The document's own text: toPlainText() would turn no-break spaces into spaces.
    const QString text =
        _ui_presetDescription->document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
    _selectedItem->setValueForKey(text.isEmpty() ? QVariant() : QVariant(text),
                                  QNBPresetKey::presetDescription);
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Editing/QNBPresetListCommands.h"
#include "Toolkit/OutlineView.h"

#include <QCheckBox>
#include <QKeyEvent>
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
    if (watched == _ui_generalViewContainer &&
        (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate))
        updateGeneralTab();
    if (watched == _ui_websiteLink && event->type() == QEvent::PaletteChange)
        showWebsiteLink();
    if (watched == _ui_presetDescription && event->type() == QEvent::FocusOut)
        descriptionTypingDidEnd();
    if (watched == _ui_presetDescription && event->type() == QEvent::ShortcutOverride) {
        // The text editor would keep these keys for a history of its own.
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore();
            return true;
        }
    }
    // The keys that move an item: when it cannot move, they must not move the selection instead.
    if (watched == _ui_presetHierarchyView && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->modifiers() & ~Qt::KeypadModifier) == Qt::AltModifier && key->key() >= Qt::Key_Left &&
            key->key() <= Qt::Key_Down)
            return true;
    }
    return QObject::eventFilter(watched, event);
}

void QNBPrefPanePref::showDescription()
{
    descriptionTypingDidEnd();
    const QSignalBlocker blocker(_ui_presetDescription);
    const QVariant description =
        _selectedItem ? _selectedItem->valueForKey(QNBPresetKey::presetDescription) : QVariant();
    _ui_presetDescription->setPlainText(description.toString());
    _descriptionParagraphs = _ui_presetDescription->document()->blockCount();
    _ui_presetDescription->setEnabled(_selectedItem != nullptr);
    _ui_presetDescription->setPlaceholderText(_selectedItem ? tr("What is this preset for?")
                                                            : tr("No preset selected"));
}

QString QNBPrefPanePref::descriptionText() const
{
    // The document's own text: toPlainText() would turn no-break spaces into spaces.
    return _ui_presetDescription->document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

void QNBPrefPanePref::descriptionTextDidChange()
{
    if (!_selectedItem)
        return;
    const QTextDocument &document = *_ui_presetDescription->document();
    // A paragraph is a step.
    if (std::exchange(_descriptionParagraphs, document.blockCount()) != document.blockCount())
        descriptionTypingDidEnd();
    const QString text = descriptionText();
    _history.push(new QNBSetPresetValueCommand(
        *_ui_presetListController, _selectedItem, QNBPresetKey::presetDescription,
        text.isEmpty() ? QVariant() : QVariant(text), tr("Typing"), _descriptionTyping));
}

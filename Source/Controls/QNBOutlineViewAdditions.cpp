// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBOutlineViewAdditions.h"

#include "Platform/Desktop/KeyCodes.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcKeys, "quenby.pane.keys", QtInfoMsg)

constexpr int codeOfUnknownKey = -1;

bool isDeleteKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete;
}

bool isReturnKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

/// Keys that mean something here whatever shortcuts there are; with other modifiers shortcuts go first.
bool isOurs(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
    return (isReturnKey(event) && modifiers == Qt::NoModifier) ||
           (isDeleteKey(event) && (modifiers == Qt::NoModifier || modifiers == Qt::ControlModifier));
}

bool isModifierKey(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
        return true;
    default:
        return false;
    }
}

void logKey(const QKeyEvent &event)
{
    if (isModifierKey(event))
        return;
    const KeyCodes::Key *key = KeyCodes::pressed(event.nativeScanCode(), event.keyCombination());
    qCInfo(lcKeys, "kestroke: %d", key ? static_cast<int>(key->code) : codeOfUnknownKey);
}

} // namespace

bool QNBOutlineView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && isOurs(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return OutlineView::event(event);
}

void QNBOutlineView::keyPressEvent(QKeyEvent *event)
{
    if (isTypingIntoEditor()) {
        OutlineView::keyPressEvent(event);
    } else if (isDeleteKey(*event)) {
        if (event->modifiers().testFlag(Qt::ControlModifier) && dataSource())
            dataSource()->outlineViewDeleteRowRequested(*this, selectedRow());
    } else if (isReturnKey(*event)) {
        editRow(selectedRow());
    } else {
        logKey(*event);
        // Platforms tell of the menu key themselves, but not of its twin.
        if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier)
            askForMenuByKey();
        else
            OutlineView::keyPressEvent(event);
    }
}

void QNBOutlineView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::RightButton) {
        OutlineView::mousePressEvent(event);
        return;
    }
    // The keyboard first: what is being typed is committed, and rows may move by that.
    setFocus(Qt::MouseFocusReason);
    selectRowAlone(event->position().toPoint());
}

void QNBOutlineView::contextMenuEvent(QContextMenuEvent *event)
{
    if (!menu_) {
        OutlineView::contextMenuEvent(event);
        return;
    }
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    menu_->popup(byKey ? menuPositionAtSelectedRow() : event->globalPos());
}

void QNBOutlineView::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    OutlineView::closeEditor(editor, hint);
    // The delegate gives this hint for Return alone; the editor may have lost the keyboard by now.
    if (hint == QAbstractItemDelegate::SubmitModelCache)
        setFocus();
}

/// Keys that the editor of a row has no use for come here too.
bool QNBOutlineView::isTypingIntoEditor() const
{
    return state() == EditingState && !hasFocus();
}

void QNBOutlineView::selectRowAlone(const QPoint &point)
{
    const QModelIndex index = indexAt(point);
    if (index.isValid())
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    else
        selectRow(noRow);
}

void QNBOutlineView::askForMenuByKey()
{
    const QPoint position = rect().center();
    QContextMenuEvent request(QContextMenuEvent::Keyboard, position, mapToGlobal(position));
    QCoreApplication::sendEvent(this, &request);
}

/// In coordinates of the screen, below the row, or at the beginning of the view if none is selected.
QPoint QNBOutlineView::menuPositionAtSelectedRow()
{
    QRect place(viewport()->rect().topLeft(), QSize(1, 1));
    const QModelIndexList selected = selectionModel()->selectedRows();
    if (!selected.isEmpty()) {
        scrollTo(selected.constFirst());
        place = visualRect(selected.constFirst()) & viewport()->rect();
    }
    return viewport()->mapToGlobal(place.bottomLeft());
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetListView.h"

#include "Helper/Launcher/PresetMatches.h"
#include "Toolkit/EmptyState.h"
#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>

#include <algorithm>

namespace {

constexpr int shownRows = 9;
constexpr int shownCharacters = 64;

} // namespace

PresetListView::PresetListView()
{
    setUniformItemSizes(true);
    setSpacing(1);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    // Labels that begin alike differ at their ends.
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(QCoreApplication::translate("PresetListView", "Presets"));
}

void PresetListView::setEmptyText(const QString &text)
{
    if (text == emptyText_)
        return;
    emptyText_ = text;
    setAccessibleDescription(text);
    viewport()->update();
}

bool PresetListView::takeKey(QKeyEvent &event)
{
    // In a field these two go to its ends unless Ctrl is pressed; in the list it makes no difference.
    const bool isEnd = event.key() == Qt::Key_Home || event.key() == Qt::Key_End;
    const bool isStep = event.key() == Qt::Key_Up || event.key() == Qt::Key_Down ||
                        event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (!(isStep && modifiers == Qt::NoModifier) && !(isEnd && modifiers == Qt::ControlModifier))
        return false;
    QKeyEvent key(event.type(), event.key(), Qt::NoModifier);
    keyPressEvent(&key);
    return true;
}

QSize PresetListView::sizeHint() const
{
    const int row = std::max(sizeHintForRow(0), fontMetrics().lineSpacing()) + 2 * spacing();
    return {fontMetrics().averageCharWidth() * shownCharacters, row * shownRows + 2 * frameWidth()};
}

bool PresetListView::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QListView::viewportEvent(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const QModelIndex index = indexAt(help->pos());
    if (index.isValid())
        QToolTip::showText(help->globalPos(),
                           PlainText::toolTip(index.data(PresetMatches::wholeTextRole).toString()),
                           viewport(), visualRect(index));
    else
        QToolTip::hideText();
    return true;
}

void PresetListView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    EmptyState::paint(*this, emptyText_);
}

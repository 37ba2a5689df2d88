// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/EmptyState.h"

#include <QAbstractItemView>
#include <QPainter>

void EmptyState::paint(QAbstractItemView &view, const QString &text)
{
    if (text.isEmpty() || (view.model() && view.model()->rowCount() > 0))
        return;
    constexpr int margin = 12;
    QPainter painter(view.viewport());
    painter.setPen(view.palette().color(QPalette::PlaceholderText));
    painter.drawText(view.viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
}

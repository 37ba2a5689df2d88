// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DropIndicator.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>

DropIndicator::DropIndicator(QAbstractItemView &view)
    : view_(view)
{
    // The rows went elsewhere; the next step of the drag tells anew.
    for (const QScrollBar *bar : {view.verticalScrollBar(), view.horizontalScrollBar()})
        QObject::connect(bar, &QScrollBar::valueChanged, &connections_, [this] { hide(); });
}

void DropIndicator::show(const QRect &place)
{
    if (place == place_)
        return;
    place_ = place;
    view_.viewport()->update();
}

void DropIndicator::hide()
{
    show({});
}

void DropIndicator::paint() const
{
    if (place_.isNull())
        return;
    QStyleOption option;
    option.initFrom(&view_);
    option.rect = place_;
    QPainter painter(view_.viewport());
    view_.style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &option, &painter, &view_);
}

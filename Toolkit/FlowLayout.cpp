// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/FlowLayout.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

void FlowLayout::addItem(QLayoutItem *item)
{
    items_.emplace_back(item);
    invalidate();
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (!itemAt(index))
        return nullptr;
    const auto place = items_.begin() + index;
    QLayoutItem *item = place->release();
    items_.erase(place);
    invalidate();
    return item;
}

QSize FlowLayout::sizeHint() const
{
    QSize size(0, 0);
    for (const auto &item : items_) {
        if (item->isEmpty())
            continue;
        const QSize hint = item->sizeHint();
        const int before = size.width() > 0 ? size.width() + gap() : 0;
        size = QSize(before + hint.width(), std::max(size.height(), hint.height()));
    }
    return size.grownBy(contentsMargins());
}

/// Some styles leave it to the widgets.
int FlowLayout::gap() const
{
    return spacing() >= 0 ? spacing()
                          : parentWidget()->style()->layoutSpacing(QSizePolicy::PushButton,
                                                                   QSizePolicy::PushButton, Qt::Horizontal);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const auto &item : items_)
        size = size.expandedTo(item->minimumSize());
    return size.grownBy(contentsMargins());
}

int FlowLayout::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    int height = 0;
    for (const Place &place : placesIn({0, 0, width - margins.left() - margins.right(), 0}))
        height = std::max(height, place.rect.y() + place.rect.height());
    return height + margins.top() + margins.bottom();
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    const QRect contents = rect.marginsRemoved(contentsMargins());
    const Qt::LayoutDirection direction = parentWidget()->layoutDirection();
    for (const Place &place : placesIn(contents))
        place.item->setGeometry(QStyle::visualRect(direction, contents, place.rect));
}

std::vector<FlowLayout::Place> FlowLayout::placesIn(const QRect &rect) const
{
    std::vector<Place> places;
    std::size_t firstOfRow = 0;
    QPoint next = rect.topLeft();
    int rowHeight = 0;
    // A low one, like a label, stands in the middle of its row.
    const auto endRow = [&] {
        for (; firstOfRow < places.size(); ++firstOfRow) {
            QRect &place = places[firstOfRow].rect;
            place.moveTop(next.y() + (rowHeight - place.height()) / 2);
        }
        next = {rect.left(), next.y() + rowHeight + gap()};
        rowHeight = 0;
    };
    for (const auto &item : items_) {
        if (item->isEmpty())
            continue;
        const QSize size(
            std::min(item->sizeHint().width(), std::max(rect.width(), item->minimumSize().width())),
            item->sizeHint().height());
        if (firstOfRow < places.size() && next.x() + size.width() > rect.left() + rect.width())
            endRow();
        places.push_back({item.get(), QRect(next, size)});
        next.rx() += size.width() + gap();
        rowHeight = std::max(rowHeight, size.height());
    }
    endRow();
    return places;
}

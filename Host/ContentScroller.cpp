// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/ContentScroller.h"

#include <QEvent>
#include <QScreen>

ContentScroller::ContentScroller(QWidget &content)
{
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(&content);
    // The ground is the window's.
    content.setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

QSize ContentScroller::sizeHint() const
{
    return widget() ? widget()->sizeHint().expandedTo(widget()->minimumSize()) : QSize();
}

QSize ContentScroller::minimumSizeHint() const
{
    if (!widget())
        return {};
    // A frame stands beside it, and notices above it.
    const QSize screenSize = screen()->availableSize();
    const QSize room(screenSize.width() * 9 / 10, screenSize.height() / 2);
    return widget()->minimumSizeHint().expandedTo(widget()->minimumSize()).boundedTo(room);
}

bool ContentScroller::event(QEvent *event)
{
    // The view's size hints have changed, and with them these.
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::event(event);
}

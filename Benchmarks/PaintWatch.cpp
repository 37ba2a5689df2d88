// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/PaintWatch.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>

PaintWatch::PaintWatch(QAbstractScrollArea &view)
{
    view.viewport()->installEventFilter(this);
}

bool PaintWatch::waitUntilPainted()
{
    constexpr int patience = 10'000;
    const QDeadlineTimer deadline(patience);
    while (!isPainted_ && !deadline.hasExpired())
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return isPainted_;
}

bool PaintWatch::eventFilter(QObject *watched, QEvent *event)
{
    isPainted_ = isPainted_ || event->type() == QEvent::Paint;
    return QObject::eventFilter(watched, event);
}

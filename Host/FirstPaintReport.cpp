// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/FirstPaintReport.h"

#include <QEvent>
#include <QWidget>

#include <chrono>
#include <cstdio>

void FirstPaintReport::installIfRequested(QWidget *window, std::function<void()> reported)
{
    if (qEnvironmentVariableIsSet("QUENBY_REPORT_FIRST_PAINT"))
        window->installEventFilter(new FirstPaintReport(window, std::move(reported)));
}

FirstPaintReport::FirstPaintReport(QWidget *window, std::function<void()> reported)
    : QObject(window)
    , reported_(std::move(reported))
{
}

bool FirstPaintReport::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        // Queued, so that the children are painted and the window's contents are on their way too.
        const auto report = [this] {
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            const long long time = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
            std::fprintf(stderr, "first-paint-ns: %lld\n", time);
            reported_();
        };
        QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

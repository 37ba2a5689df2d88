// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/WaitingFiles.h"

#include "Hosting/PaneSession.h"

#include <QApplication>
#include <QThread>

#include <chrono>
#include <utility>

namespace {

/// Until it is looked again whether the pane can take files.
constexpr std::chrono::milliseconds untilNextLook(200);

} // namespace

WaitingFiles::WaitingFiles(std::function<PaneSession *()> shownPane)
    : shownPane_(std::move(shownPane))
{
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { handOver(); });
}

void WaitingFiles::add(const QStringList &paths)
{
    paths_ += paths;
    handOver();
}

void WaitingFiles::handOver()
{
    if (paths_.isEmpty())
        return;
    const bool isBusy = QThread::currentThread()->loopLevel() > 1 || QApplication::activeModalWidget() ||
                        QApplication::activePopupWidget();
    PaneSession *const pane = shownPane_();
    if (pane && !pane->isErrorPage() && !isBusy)
        pane->openFiles(std::exchange(paths_, {}));
    else
        timer_.start(untilNextLook);
}

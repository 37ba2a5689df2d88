// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/CreationPanel.h"

#include "Platform/LineText.h"
#include "Toolkit/PlainText.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto updateInterval = 100ms;
/// The dialog counts in steps of these; the work may be more than it can count.
constexpr int wholeProgress = 1000;

QString tr(const char *text)
{
    return QCoreApplication::translate("CreationPanel", text);
}

} // namespace

CreationPanel::CreationPanel(std::function<CreationWorker::Progress()> progress, std::function<void()> cancel)
    : progress_(std::move(progress))
    , cancel_(std::move(cancel))
{
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
        if (dialog_)
            update();
        else
            show();
    });
}

CreationPanel::~CreationPanel() = default;

void CreationPanel::begin(const CreationOrder &order)
{
    order_ = order;
    dialog_.reset();
    timer_.start(patience);
}

void CreationPanel::end()
{
    timer_.stop();
    dialog_.reset();
}

void CreationPanel::show()
{
    dialog_.reset(PlainText::progressDialog(
        tr("Creating \"%1\" in %2").arg(lineText(order_.label), lineText(order_.folder)), tr("Cancel"),
        wholeProgress));
    dialog_->setWindowTitle(tr("Quenby"));
    dialog_->setAutoReset(false);
    dialog_->setAutoClose(false);
    QObject::connect(dialog_.get(), &QProgressDialog::canceled, dialog_.get(), [this] { cancel_(); });
    update();
    dialog_->show();
    timer_.start(updateInterval);
}

void CreationPanel::update()
{
    const CreationWorker::Progress progress = progress_();
    if (progress.total > 0 && !dialog_->wasCanceled())
        dialog_->setValue(int(double(progress.done) / double(progress.total) * wholeProgress));
}

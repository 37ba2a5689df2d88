// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/CreationWorker.h"

#include <QPointer>
#include <QProgressDialog>
#include <QTimer>

#include <functional>

/// Shows how far a creation is, once it has taken more than a moment.
class CreationPanel
{
public:
    /// How long a creation may take without being shown.
    static constexpr std::chrono::milliseconds patience{1000};

    CreationPanel(std::function<CreationWorker::Progress()> progress, std::function<void()> cancel);
    ~CreationPanel();
    CreationPanel(const CreationPanel &) = delete;
    CreationPanel &operator=(const CreationPanel &) = delete;

    void begin(const CreationOrder &order);
    void end();

private:
    void show();
    void update();

    const std::function<CreationWorker::Progress()> progress_;
    const std::function<void()> cancel_;
    CreationOrder order_;
    /// Runs only between begin() and end().
    QTimer timer_;
    std::unique_ptr<QProgressDialog> dialog_;
};

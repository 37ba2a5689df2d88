// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Presets.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <functional>

/// Reads the settings when they have changed.
class SettingsWatch
{
public:
    /// \a wereRead is called by read(), also from the event loop.
    explicit SettingsWatch(std::function<void(const Result<QNBSettings> &settings)> wereRead);

    /// Somebody says that they are others now. Of a burst of changes the last one is read; of one without an
    /// end, one now and then.
    void changed();
    /// At once. Settings that cannot be read are tried again, each time after a longer pause.
    void read();

private:
    const std::function<void(const Result<QNBSettings> &)> wereRead_;
    QTimer readTimer_;
    QDeadlineTimer latestRead_;
    QTimer retryTimer_;
};

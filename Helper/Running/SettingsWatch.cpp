// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/SettingsWatch.h"

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The pane saves several times in a row when its windows come and go.
constexpr auto readDelay = 100ms;
/// Changes that never cease are waited for no longer than this.
constexpr auto longestReadDelay = 1000ms;
/// Before settings that cannot be read are tried again: soon at first, for a home that is still being
/// mounted.
constexpr auto firstRetryPause = 1000ms;
constexpr auto longestRetryPause = 60'000ms;

} // namespace

SettingsWatch::SettingsWatch(std::function<void(const Result<QNBSettings> &settings)> wereRead)
    : wereRead_(std::move(wereRead))
{
    for (QTimer *timer : {&readTimer_, &retryTimer_}) {
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, timer, [this] { read(); });
    }
    retryTimer_.setInterval(0ms);
}

void SettingsWatch::changed()
{
    if (!readTimer_.isActive())
        latestRead_.setRemainingTime(longestReadDelay);
    readTimer_.start(std::min(readDelay, std::chrono::milliseconds(latestRead_.remainingTime())));
}

void SettingsWatch::read()
{
    const Result<QNBSettings> settings = readSettings();
    if (settings) {
        retryTimer_.stop();
        retryTimer_.setInterval(0ms);
    } else {
        retryTimer_.start(
            std::clamp(2 * retryTimer_.intervalAsDuration(), firstRetryPause, longestRetryPause));
    }
    wereRead_(settings);
}

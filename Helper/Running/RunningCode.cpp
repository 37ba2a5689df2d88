// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RunningCode.h"

#include "Helper/Running/RunningHelper.h"
#include "Platform/SessionBus.h"

#include <QApplication>

#include <chrono>

using namespace std::chrono_literals;

namespace {

/// A bus that is there answers within a millisecond or two.
constexpr auto busTimeout = 1000ms;

} // namespace

extern "C" Q_DECL_EXPORT RunningCode::Run runInBackground;

int runInBackground(int &argc, char **argv)
{
    // The library's own windows use it.
    SessionBus::keepIfItAnswers(busTimeout);
    QGuiApplication::setDesktopFileName(QStringLiteral(QUENBY_IDENTIFIER));
    QApplication application(argc, argv);
    return runHelper(application);
}

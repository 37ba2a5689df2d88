// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RunningCode.h"

#include "Helper/Running/HelperSession.h"
#include "Helper/Running/RunningHelper.h"
#include "Platform/BusProbe.h"
#include "Platform/LineText.h"
#include "Platform/SessionBus.h"

#include <QApplication>
#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>

namespace {

/// What the process was started with, to be started with again.
class Beginning
{
public:
    Beginning()
    {
        for (size_t i = 0; i < numbers.size(); ++i)
            ::sigaction(numbers[i], nullptr, &actions_[i]);
    }
    /// Keeps the process, its name and environment. Returns if that is not possible.
    void repeat(const QString &program, char **argv) const
    {
        for (size_t i = 0; i < numbers.size(); ++i)
            ::sigaction(numbers[i], &actions_[i], nullptr);
        ::execv(QFile::encodeName(program).constData(), argv);
        std::fprintf(stderr, "QNBHelper: %s: %s\n", qPrintable(lineText(program)), std::strerror(errno));
    }

private:
    static constexpr std::array numbers = {SIGTERM, SIGINT, SIGHUP};
    std::array<struct sigaction, numbers.size()> actions_ = {};
};

} // namespace

extern "C" Q_DECL_EXPORT RunningCode::Run runInBackground;

int runInBackground(int &argc, char **argv)
{
    const Beginning beginning;
    BusProbe::keepLibraryFromWaiting(SessionBus::answerTimeout);
    QGuiApplication::setDesktopFileName(QStringLiteral(QUENBY_IDENTIFIER));
    std::optional<QApplication> application(std::in_place, argc, argv);
    const QString program = QCoreApplication::applicationFilePath();
    const int result = runHelper(*application);
    application.reset();
    if (result != HelperSession::beginAnewCode)
        return result;
    beginning.repeat(program, argv);
    return EXIT_FAILURE;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/OwnProcesses.h"

#include <QApplication>
#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleMock(&argc, argv);
    return runInOwnProcesses([&argc, argv] {
        const QApplication application(argc, argv);
        return RUN_ALL_TESTS();
    });
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/OwnProcesses.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    return runInOwnProcesses([&argc, argv] {
        const QCoreApplication application(argc, argv);
        return RUN_ALL_TESTS();
    });
}

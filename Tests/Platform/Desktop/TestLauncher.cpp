// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "TestLauncher.h"

#include "Tests/Session/ChildProcess.h"

#include <QFile>

#include <gtest/gtest.h>

TestLauncher::TestLauncher()
    : path_(qgetenv("PATH"))
{
    qputenv("PATH", folder_.path().toUtf8() + ":" + path_);
}

TestLauncher::~TestLauncher()
{
    qputenv("PATH", path_);
}

void TestLauncher::install()
{
    QFile launcher(folder_.filePath(QStringLiteral("xdg-open")));
    ASSERT_TRUE(launcher.open(QIODevice::WriteOnly));
    launcher.write("#!/bin/sh\n"
                   "for argument in \"$@\"; do printf '[%s]' \"$argument\"; done > '" +
                   record().toUtf8() + ".new'\nmv '" + record().toUtf8() + ".new' '" + record().toUtf8() +
                   "'\n");
    launcher.close();
    ASSERT_TRUE(launcher.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

QByteArray TestLauncher::launched()
{
    if (!waitUntil([this] { return wasStarted(); }))
        return "nothing";
    QFile file(record());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestLauncher::wasStarted() const
{
    return QFile::exists(record());
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/HomeOwner.h"

#include "Platform/Desktop/DesktopFolders.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

Result<> HomeOwner::check(const QProcessEnvironment &environment)
{
    const QString home = DesktopFolders::home(environment);
    struct stat information = {};
    if (home.isEmpty() || ::stat(QFile::encodeName(home).constData(), &information) != 0 ||
        information.st_uid == ::geteuid())
        return {};
    return Result<>::failure(QCoreApplication::translate(
                                 "HomeOwner",
                                 "The home folder %1 belongs to another user, who could not change the files "
                                 "that would be written there: nothing was done.")
                                 .arg(home));
}

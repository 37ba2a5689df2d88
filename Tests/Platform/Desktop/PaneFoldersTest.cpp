// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/PaneFolders.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

const QString inLibrary = QStringLiteral("/" QUENBY_INSTALL_LIBDIR "/PreferencePanes");
const QString inData = QStringLiteral("/PreferencePanes");

/// Changes a variable for one test.
class Variable
{
public:
    Variable(const char *name, const QByteArray &value)
        : name_(name)
        , before_(qgetenv(name))
        , wasSet_(qEnvironmentVariableIsSet(name))
    {
        qputenv(name, value);
    }
    ~Variable()
    {
        if (wasSet_)
            qputenv(name_, before_);
        else
            qunsetenv(name_);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *name_;
    const QByteArray before_;
    const bool wasSet_;
};

} // namespace

TEST(PaneFoldersTest, OfEachPrefixTheLibraryComesBeforeTheDataFolderAndTheUsersBeforeTheSystems)
{
    const Variable home("XDG_DATA_HOME", "/user/.local/share");
    const Variable system("XDG_DATA_DIRS", "/first/share:/second/share/");
    const QString user = QStringLiteral("/user/.local");
    const QString first = QStringLiteral("/first");
    const QString second = QStringLiteral("/second");
    const QString share = QStringLiteral("/share");
    EXPECT_THAT(PaneFolders::installed(),
                ElementsAre(user + inLibrary, user + share + inData, first + inLibrary,
                            first + share + inData, second + inLibrary, second + share + inData));
}

TEST(PaneFoldersTest, WhatLiesBesideADataFolderWithoutAPrefixIsNotLookedAt)
{
    const Variable home("XDG_DATA_HOME", "/tmp/data");
    const Variable system("XDG_DATA_DIRS", "/tmp/myshare");
    EXPECT_THAT(PaneFolders::installed(),
                ElementsAre(QStringLiteral("/tmp/data") + inData, QStringLiteral("/tmp/myshare") + inData));
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/WindowPlaces.h"

#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

const QString pane = QStringLiteral("/panes/Some.prefPane");
const QString otherPane = QStringLiteral("/panes/Other.prefPane");

class WindowPlacesTest : public ::testing::Test
{
protected:
    WindowPlacesTest()
        : before_(qgetenv("XDG_STATE_HOME"))
    {
        qputenv("XDG_STATE_HOME", QFile::encodeName(home_.stateFolder()));
    }
    ~WindowPlacesTest() override { qputenv("XDG_STATE_HOME", before_); }

    QString file() const { return home_.stateFolder() + QStringLiteral("/Quenby/preferences.ini"); }
    QString earlierFolder() const { return home_.stateFolder() + QStringLiteral("/quenby"); }
    /// As version 0.1.0 wrote it.
    void putEarlierFile() const
    {
        QSettings earlier(earlierFolder() + QStringLiteral("/preferences.ini"), QSettings::IniFormat);
        earlier.setValue(QStringLiteral("place/Some"), QByteArray("some\0place", 10));
        earlier.setValue(QStringLiteral("place/Other"), QByteArray("other place"));
    }
    static mode_t modeOf(const QString &path)
    {
        struct stat information = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &information), 0) << qPrintable(path);
        return information.st_mode & 07777;
    }

    const TemporaryHome home_;

private:
    const QByteArray before_;
};

} // namespace

TEST_F(WindowPlacesTest, OfAnUnknownPaneNothingIsKnown)
{
    EXPECT_EQ(WindowPlaces::placeOf(pane), QByteArray());
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(WindowPlacesTest, WhatIsRememberedIsForItsOwnerOnly)
{
    const mode_t umaskBefore = ::umask(022);
    ASSERT_TRUE(WindowPlaces::remember(pane, "here"));
    ASSERT_TRUE(WindowPlaces::remember(otherPane, "there"));
    ::umask(umaskBefore);
    EXPECT_EQ(WindowPlaces::placeOf(pane), "here");
    EXPECT_EQ(WindowPlaces::placeOf(otherPane), "there");
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(modeOf(QFileInfo(file()).path()), 0700U);
}

TEST_F(WindowPlacesTest, TheFileOfTheFirstVersionIsTakenOverAndRemoved)
{
    putEarlierFile();
    EXPECT_EQ(WindowPlaces::placeOf(pane), QByteArray("some\0place", 10));
    EXPECT_EQ(WindowPlaces::placeOf(otherPane), "other place");
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_FALSE(QFile::exists(earlierFolder()));
}

TEST_F(WindowPlacesTest, OthersFilesBesideTheOneOfTheFirstVersionStay)
{
    putEarlierFile();
    const QString other = earlierFolder() + QStringLiteral("/mine");
    ASSERT_TRUE(QDir().mkpath(other));
    EXPECT_EQ(WindowPlaces::placeOf(otherPane), "other place");
    EXPECT_TRUE(QFile::exists(other));
    EXPECT_FALSE(QFile::exists(earlierFolder() + QStringLiteral("/preferences.ini")));
}

TEST_F(WindowPlacesTest, WhatCannotBeTakenOverIsReadWhereItIs)
{
    putEarlierFile();
    QFile obstacle(home_.stateFolder() + QStringLiteral("/Quenby"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    EXPECT_EQ(WindowPlaces::placeOf(otherPane), "other place");
    EXPECT_TRUE(QFile::exists(earlierFolder() + QStringLiteral("/preferences.ini")));
}

TEST_F(WindowPlacesTest, WhatCannotBeWrittenIsAFailure)
{
    QFile obstacle(home_.stateFolder() + QStringLiteral("/Quenby"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    EXPECT_FALSE(WindowPlaces::remember(pane, "here"));
}

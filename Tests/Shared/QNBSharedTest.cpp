// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBShared.h"

#include <QList>
#include <QStringList>
#include <cstdio>
#include <gmock/gmock.h>
#include <utility>

namespace {

/// Writes where the application-support folder is, for a process that starts with these; null for unset.
[[noreturn]] void exitWithApplicationSupportPath(const char *dataHome, const char *home)
{
    dataHome ? qputenv("XDG_DATA_HOME", dataHome) : qunsetenv("XDG_DATA_HOME");
    qputenv("HOME", home);
    std::fprintf(stderr, "at %s.", qPrintable(QNBApplicationSupportPath()));
    std::_Exit(0);
}

} // namespace

TEST(QNBShared, DeletingFileSystemEntitiesRemovesSlashTildeAndColon)
{
    EXPECT_EQ(stringByDeletingFileSystemEntities(QStringLiteral("a/b~c:d")), QStringLiteral("abcd"));
}

TEST(QNBShared, DeletingFileSystemEntitiesMayLeaveNothing)
{
    EXPECT_EQ(stringByDeletingFileSystemEntities(QStringLiteral("///")), QString());
}

TEST(QNBShared, RemovingCharactersKeepsTheOrderOfTheRest)
{
    EXPECT_EQ(stringByRemovingCharactersInSet(QStringLiteral("one two"), u"o "), QStringLiteral("netw"));
    EXPECT_EQ(stringByRemovingCharactersInSet(QStringLiteral("one"), u""), QStringLiteral("one"));
    EXPECT_EQ(stringByRemovingCharactersInSet(QString(), u"abc"), QString());
}

TEST(QNBShared, RemovingCharactersWorksOnUtf16Units)
{
    const QString folder = QStringLiteral("📁"); // two units
    EXPECT_EQ(stringByRemovingCharactersInSet(folder + u'x', QStringView(folder).first(1)),
              folder.right(1) + u'x');
}

TEST(QNBShared, ApplicationSupportPathIsTheProductsFolderBelowTheUsersData)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWithApplicationSupportPath("/data/of user", "/nowhere"), ::testing::ExitedWithCode(0),
                ::testing::EndsWith("at /data/of user/Quenby."));
    EXPECT_EXIT(exitWithApplicationSupportPath(nullptr, "/nowhere"), ::testing::ExitedWithCode(0),
                ::testing::EndsWith("at /nowhere/.local/share/Quenby."));
}

TEST(QNBShared, ApplicationSupportPathIsKeptForTheLifeOfTheProcess)
{
    const QString first = QNBApplicationSupportPath();
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/nowhere");
    EXPECT_EQ(QNBApplicationSupportPath(), first);
    before.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before);
}

TEST(QNBShared, ProductIdentifierNamesTheDomain)
{
    EXPECT_EQ(QNBProductIdentifier(), QStringLiteral("org.quenby.Quenby"));
}

TEST(QNBShared, FinderLabelsAreThePositionsOfTheirColours)
{
    const QStringList names = {QStringLiteral(""),       QStringLiteral("gray"),  QStringLiteral("green"),
                               QStringLiteral("purple"), QStringLiteral("blue"),  QStringLiteral("yellow"),
                               QStringLiteral("red"),    QStringLiteral("orange")};
    for (qsizetype label = 0; label < names.size(); ++label)
        EXPECT_EQ(QNBFinderLabelForColor(names.at(label)), static_cast<quint64>(label));
}

TEST(QNBShared, FinderLabelForNullAndForTheEmptyStringIsZero)
{
    EXPECT_EQ(QNBFinderLabelForColor(QString()), 0U);
    EXPECT_EQ(QNBFinderLabelForColor(QStringLiteral("")), 0U);
}

TEST(QNBShared, FinderLabelForANameOutsideTheTableIsNotFound)
{
    EXPECT_EQ(QNBNotFound, 0x7FFFFFFFFFFFFFFFU);
    for (const char *name : {"Red", "clearColor", "red ", "pink"})
        EXPECT_EQ(QNBFinderLabelForColor(QString::fromLatin1(name)), QNBNotFound) << name;
}

TEST(QNBShared, ButtonStateForBoolIsOneOrZero)
{
    EXPECT_EQ(QNBButtonStateForBool(true), 1);
    EXPECT_EQ(QNBButtonStateForBool(false), 0);
}

TEST(QNBShared, BoolForButtonStateIsTrueForOnAlone)
{
    EXPECT_TRUE(QNBBoolForButtonState(static_cast<QNBButtonState>(1)));
    EXPECT_FALSE(QNBBoolForButtonState(static_cast<QNBButtonState>(0)));
    EXPECT_FALSE(QNBBoolForButtonState(static_cast<QNBButtonState>(-1)));
}

TEST(QNBShared, ButtonStatesAreThoseOfOurWidgetsInOtherNumbers)
{
    const QList<std::pair<QNBButtonState, Qt::CheckState>> states = {
        {QNBMixedState, Qt::PartiallyChecked}, {QNBOffState, Qt::Unchecked}, {QNBOnState, Qt::Checked}};
    for (const auto &[buttonState, checkState] : states) {
        EXPECT_EQ(QNBCheckStateForButtonState(buttonState), checkState);
        EXPECT_EQ(QNBButtonStateForCheckState(checkState), buttonState);
    }
}

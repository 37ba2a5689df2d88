// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBShared.h"

#include <gtest/gtest.h>

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
    EXPECT_TRUE(QNBApplicationSupportPath().endsWith(QStringLiteral("/Quenby")));
    EXPECT_TRUE(QNBApplicationSupportPath().startsWith(u'/'));
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

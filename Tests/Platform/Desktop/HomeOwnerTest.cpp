// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/HomeOwner.h"
#include "Tests/Session/TemporaryHome.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

QProcessEnvironment withHome(const QString &home)
{
    QProcessEnvironment result;
    result.insert(QStringLiteral("HOME"), home);
    return result;
}

} // namespace

TEST(HomeOwnerTest, TheUsersOwnHomeIsAllRight)
{
    EXPECT_TRUE(HomeOwner::check(withHome(TemporaryHome().path())));
}

TEST(HomeOwnerTest, TheHomeOfAnotherIsRefusedInOneSentenceWithItsName)
{
    const TemporaryHome own;
    const QString home = own.homeOfAnother();
    const Result<> checked = HomeOwner::check(withHome(home));
    ASSERT_FALSE(checked);
    EXPECT_TRUE(checked.error.contains(home + u' ')) << qPrintable(checked.error);
    EXPECT_EQ(checked.error.count(u". "), 0);
    EXPECT_FALSE(checked.error.contains(u'\n'));
}

TEST(HomeOwnerTest, ALinkBelongsToWhomItLeadsTo)
{
    const TemporaryHome own;
    const QString link = own.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(own.homeOfAnother(), link));
    EXPECT_FALSE(HomeOwner::check(withHome(link)));
}

TEST(HomeOwnerTest, AHomeThatIsMissingBelongsToNobodyElse)
{
    EXPECT_TRUE(HomeOwner::check(withHome(TemporaryHome().filePath(QStringLiteral("missing")))));
}

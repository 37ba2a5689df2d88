// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBUniqueName.h"

#include <gtest/gtest.h>

namespace {

QSet<QString> taken(std::initializer_list<const char *> names)
{
    QSet<QString> set;
    for (const char *name : names)
        set.insert(QString::fromLatin1(name));
    return set;
}

TEST(QNBUniqueNameTest, AFreeNameStays)
{
    EXPECT_EQ(QNBUniqueName(QStringLiteral("Untitled"), {}, {}), u"Untitled");
    EXPECT_EQ(QNBUniqueName(QStringLiteral("notes"), QStringLiteral("txt"), taken({"notes"})), u"notes.txt");
}

TEST(QNBUniqueNameTest, TheCounterStartsAtOneAndFindsTheFirstGap)
{
    EXPECT_EQ(QNBUniqueName(QStringLiteral("Untitled"), {}, taken({"untitled"})), u"Untitled-1");
    EXPECT_EQ(QNBUniqueName(QStringLiteral("Untitled"), {}, taken({"untitled", "untitled-1", "untitled-3"})),
              u"Untitled-2");
}

TEST(QNBUniqueNameTest, TheCounterStandsBeforeTheExtension)
{
    EXPECT_EQ(QNBUniqueName(QStringLiteral("notes"), QStringLiteral("txt"), taken({"notes.txt"})),
              u"notes-1.txt");
}

} // namespace

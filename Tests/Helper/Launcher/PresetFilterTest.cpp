// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetFilter.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

QList<qsizetype> placesFor(const char *typed, const QStringList &labels)
{
    return PresetFilter(labels).placesFor(QString::fromUtf8(typed));
}

} // namespace

TEST(PresetFilterTest, NothingTypedIsEveryPresetInItsOrder)
{
    const QStringList labels = {QStringLiteral("b"), QString(), QStringLiteral("a")};
    EXPECT_THAT(placesFor("", labels), ElementsAre(0, 1, 2));
    EXPECT_THAT(placesFor("  ", labels), ElementsAre(0, 1, 2));
}

TEST(PresetFilterTest, TheBeginningComesFirstThenBeginningsOfWordsThenAnyPart)
{
    const QStringList labels = {
        QStringLiteral("Reprocess"), QStringLiteral("Client Project"), QStringLiteral("Project"),
        QStringLiteral("Letters"),   QStringLiteral("A5 (project)"),   QStringLiteral("Project 2"),
    };
    EXPECT_THAT(placesFor("pro", labels), ElementsAre(2, 5, 1, 4, 0));
}

TEST(PresetFilterTest, EachPartHasToBeThereInWhateverOrder)
{
    const QStringList labels = {QStringLiteral("Project of a Client"), QStringLiteral("Client Projects"),
                                QStringLiteral("Client"), QStringLiteral("Subclient Project")};
    EXPECT_THAT(placesFor("client pro", labels), ElementsAre(1, 0, 3));
    EXPECT_THAT(placesFor("pro  client ", labels), ElementsAre(0, 1, 3));
    EXPECT_THAT(placesFor("client x", labels), IsEmpty());
}

TEST(PresetFilterTest, AWordThatBeginsLaterInTheLabelCounts)
{
    // The first "art" is inside a word, the second begins one; a letter outside the first plane is one, too.
    const QStringList labels = {QString::fromUtf8("\xf0\x90\x90\x80"
                                                  "art"),
                                QStringLiteral("Smart Art")};
    EXPECT_THAT(placesFor("art", labels), ElementsAre(1, 0));
}

TEST(PresetFilterTest, CaseAndAccentsDoNotCount)
{
    const QStringList labels = {QStringLiteral("Café Ärger"), QStringLiteral("STRASSE"),
                                QStringLiteral("Ёлка"), QStringLiteral("ﬁle")};
    EXPECT_THAT(placesFor("CAFE", labels), ElementsAre(0));
    // Composed and not.
    EXPECT_THAT(placesFor("\xc3\xa4rg", labels), ElementsAre(0));
    EXPECT_THAT(placesFor("a\xcc\x88rg", labels), ElementsAre(0));
    EXPECT_THAT(placesFor("straße", labels), ElementsAre(1));
    EXPECT_THAT(placesFor("STRAẞE", labels), ElementsAre(1));
    EXPECT_THAT(placesFor("елка", labels), ElementsAre(2));
    EXPECT_THAT(placesFor("FIL", labels), ElementsAre(3));
}

TEST(PresetFilterTest, WhatIsFarInALabelIsNotSearched)
{
    const QString label = QStringLiteral("a").repeated(1024) + QStringLiteral("b");
    EXPECT_THAT(placesFor("b", {label}), IsEmpty());
    EXPECT_THAT(placesFor("aa", {label}), ElementsAre(0));
}

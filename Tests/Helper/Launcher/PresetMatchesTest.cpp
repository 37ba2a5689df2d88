// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetMatches.h"

#include <QAbstractItemModelTester>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

class PresetMatchesTest : public ::testing::Test
{
protected:
    QStringList shown() const
    {
        QStringList texts;
        for (int row = 0; row < matches_.rowCount(); ++row)
            texts.append(matches_.index(row).data().toString());
        return texts;
    }

    PresetMatches matches_;
    const QAbstractItemModelTester tester_{&matches_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(PresetMatchesTest, WhatIsTypedStaysWhenThePresetsChange)
{
    matches_.setLabels({QStringLiteral("Letters"), QStringLiteral("Photos")});
    EXPECT_THAT(shown(), ElementsAre(QStringLiteral("Letters"), QStringLiteral("Photos")));
    matches_.setTyped(QStringLiteral("ph"));
    EXPECT_THAT(shown(), ElementsAre(QStringLiteral("Photos")));
    EXPECT_EQ(matches_.placeAt(0), 1);
    matches_.setLabels({QStringLiteral("Alphabet"), QStringLiteral("Phone"), QStringLiteral("Photos")});
    EXPECT_THAT(shown(),
                ElementsAre(QStringLiteral("Phone"), QStringLiteral("Photos"), QStringLiteral("Alphabet")));
}

TEST_F(PresetMatchesTest, ALabelIsALineAndOneThatIsSharedHasItsNumber)
{
    matches_.setLabels({QStringLiteral("R&D\n"), QStringLiteral("a\u202Eb"), QStringLiteral("Same"),
                        QString(), QStringLiteral("Same")});
    EXPECT_THAT(shown(),
                ElementsAre(QStringLiteral("R&D␊"), QStringLiteral("a<U+202E>b"), QStringLiteral("Same #3"),
                            QStringLiteral("(no name)"), QStringLiteral("Same #5")));
}

TEST_F(PresetMatchesTest, WhatIsShownIsFound)
{
    const QString same = QStringLiteral("Same");
    matches_.setLabels({QStringLiteral("Letters"), same, QString(), same, QStringLiteral("\t"), QString()});
    matches_.setTyped(QStringLiteral("same #4"));
    EXPECT_THAT(shown(), ElementsAre(QStringLiteral("Same #4")));
    matches_.setTyped(QStringLiteral("(no name)"));
    EXPECT_THAT(shown(), ElementsAre(QStringLiteral("(no name) #3"), QStringLiteral("(no name) #6")));
}

TEST_F(PresetMatchesTest, ALongLabelIsToBeHadWhole)
{
    const QString label = QStringLiteral("<b>Project ").repeated(20) + QStringLiteral("A");
    matches_.setLabels({label});
    EXPECT_EQ(matches_.index(0).data(PresetMatches::wholeTextRole).toString(), label);
    EXPECT_LT(shown().constFirst().size(), label.size());
}

TEST_F(PresetMatchesTest, APresetIsFoundAgainAfterAChange)
{
    const QString letters = QStringLiteral("Letters");
    matches_.setLabels({QStringLiteral("New"), letters, letters});
    EXPECT_EQ(matches_.rowOf(2, letters), 2);
    EXPECT_EQ(matches_.rowOf(0, letters), -1) << "it may be either of them";
    EXPECT_EQ(matches_.rowOf(5, letters), -1);
    EXPECT_EQ(matches_.rowOf(5, QStringLiteral("New")), 0);
    EXPECT_EQ(matches_.rowOf(0, QStringLiteral("Gone")), -1);
    matches_.setTyped(QStringLiteral("new"));
    EXPECT_EQ(matches_.rowOf(2, letters), -1);
}

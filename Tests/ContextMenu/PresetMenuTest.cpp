// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PresetMenu.h"

#include "Tests/ContextMenu/MenuHome.h"

namespace {

class PresetMenuTest : public MenuHome
{
protected:
    QString titleOf(const QString &label) const { return menuOf({label}).items.first().title; }
    static QByteArrayList argumentsFor(const QByteArray &label, const QByteArray &position)
    {
        return {"--create", label, "--position", position, "--notify"};
    }
    const QByteArrayList more_ = {"--launcher", "--notify"};
};

} // namespace

TEST_F(PresetMenuTest, PresetsAreShownByNameInTheirOrderAndNamedByWhatIsShown)
{
    const PresetMenu menu = menuOf({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")});
    ASSERT_EQ(menu.items.size(), 4);
    EXPECT_EQ(menu.items.at(0).title, QStringLiteral("b"));
    EXPECT_EQ(menu.items.at(2).arguments, argumentsFor("c", "1"));
    EXPECT_EQ(menu.commandLine(menu.items.at(1)), QByteArrayList{helper()} + argumentsFor("a", "1"));
}

TEST_F(PresetMenuTest, TheLastEntryShowsThePresetsOfNow)
{
    for (const QStringList &labels : {QStringList(), QStringList(QStringLiteral("a"))}) {
        const PresetMenu menu = menuOf(labels);
        ASSERT_EQ(menu.items.size(), labels.size() + 1);
        EXPECT_EQ(menu.items.last().title, QStringLiteral("More…"));
        EXPECT_EQ(menu.items.last().arguments, more_);
    }
}

TEST_F(PresetMenuTest, EveryLabelIsPassedOnAsItIs)
{
    const QStringList labels = hostileLabels();
    const PresetMenu menu = menuOf(labels);
    ASSERT_EQ(menu.items.size(), labels.size() + 1);
    for (qsizetype index = 0; index < labels.size(); ++index)
        EXPECT_EQ(menu.items.at(index).arguments, argumentsFor(labels.at(index).toUtf8(), "1"));
}

TEST_F(PresetMenuTest, ATitleIsOneLineAndNeitherEmptyNorEndless)
{
    EXPECT_EQ(titleOf(QStringLiteral("two\nlines")), QStringLiteral("two\u240Alines"));
    EXPECT_EQ(titleOf(QStringLiteral("a\u202E\u009Bb")), QStringLiteral("a<U+202E><U+009B>b"));
    EXPECT_EQ(titleOf(QString()), QStringLiteral("(no name)"));
    EXPECT_EQ(titleOf(QStringLiteral("  ")), QStringLiteral("(no name)"));
    EXPECT_EQ(titleOf(QString(80, u'x')), QString(80, u'x'));
    EXPECT_EQ(titleOf(QString(81, u'x')), QString(79, u'x') + u'…');
    // No half of a character is left.
    EXPECT_EQ(titleOf(QString(78, u'x') + QStringLiteral("😀😀")), QString(78, u'x') + u'…');
}

TEST_F(PresetMenuTest, PresetsThatShareALabelAreNamedByTheirPlaceAmongThem)
{
    const PresetMenu menu =
        menuOf({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("#2")});
    ASSERT_EQ(menu.items.size(), 5);
    EXPECT_EQ(menu.items.at(0).arguments, argumentsFor("a", "1"));
    EXPECT_EQ(menu.items.at(1).arguments, argumentsFor("b", "1"));
    EXPECT_EQ(menu.items.at(2).arguments, argumentsFor("a", "2"));
    EXPECT_EQ(menu.items.at(3).arguments, argumentsFor("#2", "1"));
}

TEST_F(PresetMenuTest, WhatNoProgramCanBeGivenIsChosenInTheListOfNow)
{
    const auto argumentsOf = [this](const QString &label) { return menuOf({label}).items.first().arguments; };
    EXPECT_EQ(argumentsOf(QStringLiteral("null") + QChar::Null), more_);
    EXPECT_EQ(argumentsOf(QStringLiteral("half") + QChar(u'\xd83d')), more_);
    EXPECT_EQ(argumentsOf(QString(16 * 1024 + 1, u'x')), more_);
    EXPECT_EQ(argumentsOf(QString(16 * 1024, u'x')), argumentsFor(QByteArray(16 * 1024, 'x'), "1"));
}

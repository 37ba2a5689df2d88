// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/PresetMenu.h"

#include "Tests/ContextMenu/MenuHome.h"

namespace {

class PresetMenuTest : public MenuHome
{
protected:
    QString titleOf(const QString &label) const
    {
        const PresetMenu menu = menuOf({label});
        return menu.items.isEmpty() ? QStringLiteral("nothing") : menu.items.first().title;
    }
};

} // namespace

TEST_F(PresetMenuTest, PresetsAreShownByNameInTheirOrder)
{
    const PresetMenu menu = menuOf({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")});
    ASSERT_EQ(menu.items.size(), 3);
    EXPECT_EQ(menu.items.at(0).title, QStringLiteral("b"));
    EXPECT_EQ(menu.items.at(2).name, "c");
    EXPECT_EQ(menu.commandLine(menu.items.at(1)), QByteArrayList({helper(), "--create", "a", "--notify"}));
}

TEST_F(PresetMenuTest, EveryLabelIsPassedOnAsItIs)
{
    const QStringList labels = hostileLabels();
    const PresetMenu menu = menuOf(labels);
    ASSERT_EQ(menu.items.size(), labels.size());
    for (qsizetype index = 0; index < labels.size(); ++index)
        EXPECT_EQ(menu.items.at(index).name, labels.at(index).toUtf8());
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

TEST_F(PresetMenuTest, PresetsThatShareALabelAreNamedByNumber)
{
    const PresetMenu menu = menuOf({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a")});
    ASSERT_EQ(menu.items.size(), 3);
    EXPECT_EQ(menu.items.at(0).name, "#1");
    EXPECT_EQ(menu.items.at(1).name, "b");
    EXPECT_EQ(menu.items.at(2).name, "#3");
    EXPECT_EQ(menu.items.at(2).title, QStringLiteral("a"));
}

TEST_F(PresetMenuTest, WhatNoProgramCanBeGivenIsNamedByNumber)
{
    const auto nameOf = [this](const QString &label) {
        const PresetMenu menu = menuOf({label});
        return menu.items.size() == 1 ? menu.items.first().name : QByteArray("nothing");
    };
    EXPECT_EQ(nameOf(QStringLiteral("null") + QChar::Null), "#1");
    EXPECT_EQ(nameOf(QStringLiteral("half") + QChar(u'\xd83d')), "#1");
    EXPECT_EQ(nameOf(QString(16 * 1024 + 1, u'x')), "#1");
    EXPECT_EQ(nameOf(QString(16 * 1024, u'x')).size(), 16 * 1024);
}

TEST_F(PresetMenuTest, WhatNothingNamesIsLeftOut)
{
    const PresetMenu menu = menuOf({QStringLiteral("a"), QStringLiteral("a"), QStringLiteral("#2")});
    ASSERT_EQ(menu.items.size(), 2);
    EXPECT_EQ(menu.items.at(0).name, "#1");
    EXPECT_EQ(menu.items.at(1).name, "#2");
    EXPECT_EQ(menu.items.at(1).title, QStringLiteral("#2"));
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include <QLabel>

namespace {

const QStringList buttonNames{QStringLiteral("red"),   QStringLiteral("orange"),    QStringLiteral("yellow"),
                              QStringLiteral("green"), QStringLiteral("blue"),      QStringLiteral("purple"),
                              QStringLiteral("gray"),  QStringLiteral("clearColor")};

class QNBPrefPanePrefColorLabels : public PaneFixture
{
protected:
    /// A preset with one file for each of \a colors.
    void openWithColors(const QStringList &colors)
    {
        QStringList files;
        for (const QString &color : colors)
            files << QStringLiteral("file labelled ") + color;
        const QNBPresetRecordPtr record = preset(QStringLiteral("A"), files);
        for (qsizetype i = 0; i < colors.size(); ++i)
            record->fileHierarchy()->childAtIndex(static_cast<int>(i))->setColorName(colors[i]);
        store({record});
        openPane();
    }

    QNBHoverButton &button(const QString &name) const
    {
        return *outlet<QNBHoverButton>(QStringLiteral("_ui_%1Button").arg(name));
    }

    /// The names of the buttons that are on.
    QStringList lit() const
    {
        QStringList names;
        for (const QString &name : buttonNames) {
            if (button(name).state() == Qt::Checked)
                names << name;
        }
        return names;
    }

    QString colorName() const { return outlet<QLabel>(QStringLiteral("_ui_hoveredColor"))->text(); }
};

TEST_F(QNBPrefPanePrefColorLabels, SelectingAnItemLightsItsButtonAndShowsTheName)
{
    openWithColors({QStringLiteral("red"), QStringLiteral("gray"), {}});
    EXPECT_EQ(lit(), QStringList());
    outline().selectRow(0);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("red")});
    EXPECT_EQ(colorName(), u"“Red”");
    outline().selectRow(1);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("gray")});
    EXPECT_EQ(colorName(), u"“Gray”");
    outline().selectRow(2);
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
    outline().selectRow(1);
    outline().selectRow(OutlineView::noRow);
    EXPECT_EQ(lit(), QStringList());
    EXPECT_EQ(colorName(), u"");
}

TEST_F(QNBPrefPanePrefColorLabels, ACapitalisedColorNameLightsItsButton)
{
    openWithColors({QStringLiteral("Red")});
    outline().selectRow(0);
    EXPECT_EQ(lit(), QStringList{QStringLiteral("red")});
    EXPECT_EQ(colorName(), u"“Red”");
}

TEST_F(QNBPrefPanePrefColorLabels, AnUnknownColorLightsNoButton)
{
    openWithColors({QStringLiteral("blue"), QStringLiteral("crimson"), QStringLiteral("clearColor"),
                    QStringLiteral("startStop")});
    for (int row = 1; row < outline().numberOfRows(); ++row) {
        outline().selectRow(0);
        outline().selectRow(row);
        EXPECT_EQ(lit(), QStringList()) << row;
        EXPECT_EQ(colorName(), u"") << row;
    }
}

} // namespace

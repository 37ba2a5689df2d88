// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

const QStringList boxNames{QStringLiteral("OwnerR"),  QStringLiteral("OwnerW"),  QStringLiteral("OwnerX"),
                           QStringLiteral("GroupR"),  QStringLiteral("GroupW"),  QStringLiteral("GroupX"),
                           QStringLiteral("OthersR"), QStringLiteral("OthersW"), QStringLiteral("OthersX")};

QVariantMap permissions(qlonglong owner, qlonglong group, qlonglong others)
{
    return {{QStringLiteral("u"), owner}, {QStringLiteral("g"), group}, {QStringLiteral("o"), others}};
}

class QNBPrefPanePrefPermissions : public PaneFixture
{
protected:
    void TearDown() override { expectNothingSavedSinceStoring(); }

    QCheckBox &box(const QString &name) const
    {
        return *outlet<QCheckBox>(QStringLiteral("_ui_perm") + name);
    }

    QNBHierarchyItem &item(int row) const
    {
        return *static_cast<QNBHierarchyItem *>(outline().itemAtRow(row).get());
    }

    /// A file and a folder with a file, then a folder with a folder and two files.
    void openTree()
    {
        const QNBPresetRecordPtr record =
            preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("outer/")});
        const QNBHierarchyItemPtr outer = record->fileHierarchy()->childAtIndex(1);
        const QNBHierarchyItemPtr inner = QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("inner"), true, nullptr), outer);
        outer->addChild(inner);
        inner->addChild(QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("deep"), false, nullptr), inner));
        store({record});
        openPane();
        ASSERT_EQ(outlineRows(),
                  QStringList({QStringLiteral("file"), QStringLiteral("outer"), QStringLiteral("inside"),
                               QStringLiteral("inner"), QStringLiteral("deep")}));
    }

    void openWith(const QVariantMap &fileHas)
    {
        const QNBPresetRecordPtr record = preset(QStringLiteral("A"), {QStringLiteral("file")});
        record->fileHierarchy()->childAtIndex(0)->setCustomPermissions(fileHas);
        store({record});
        openPane();
        // What was stored may hold less than what was set.
        item(0).setCustomPermissions(fileHas);
        outline().selectRow(0);
    }

    /// As the user does; the state is what that leaves.
    void click(const QString &name, Qt::CheckState becomes) const
    {
        box(name).click();
        EXPECT_EQ(box(name).checkState(), becomes);
    }
    /// Tells the pane of a state that no click leaves.
    void tellOf(const QString &name, Qt::CheckState state) const
    {
        box(name).setCheckState(state);
        pane->permissionsCheckboxClicked(box(name));
    }

    QMenu &menu() const { return *outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu")); }

    void openMenu() const
    {
        menu().popup(outline().viewport()->mapToGlobal(QPoint(5, 5)));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu()));
    }

    const QAction &undoAction() const { return *outlet<QAction>(QStringLiteral("_undoAction")); }

    QStringList checked() const
    {
        QStringList names;
        for (const QString &name : boxNames) {
            if (box(name).checkState() == Qt::Checked)
                names << name;
        }
        return names;
    }
};

TEST_F(QNBPrefPanePrefPermissions, AnItemWith764ShowsItsBoxes)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("file")})});
    openPane();
    EXPECT_EQ(checked(), QStringList());
    outline().selectRow(0);
    EXPECT_EQ(checked(),
              QStringList({QStringLiteral("OwnerR"), QStringLiteral("OwnerW"), QStringLiteral("OwnerX"),
                           QStringLiteral("GroupR"), QStringLiteral("GroupW"), QStringLiteral("OthersR")}));
    outline().selectRow(OutlineView::noRow);
    EXPECT_EQ(checked(), QStringList());
}

TEST_F(QNBPrefPanePrefPermissions, TheBoxesAreRefreshedBeforeTheColourButtons)
{
    const QNBPresetRecordPtr record = preset(QStringLiteral("A"), {QStringLiteral("file")});
    record->fileHierarchy()->childAtIndex(0)->setColorName(QStringLiteral("red"));
    record->fileHierarchy()->childAtIndex(0)->setCustomPermissions(permissions(4, 0, 1));
    store({record});
    openPane();
    QStringList changes;
    for (const QString &name : boxNames)
        QObject::connect(&box(name), &QCheckBox::stateChanged, [&changes, name] { changes << name; });
    QObject::connect(outlet<QNBHoverButton>(QStringLiteral("_ui_redButton")), &QNBHoverButton::toggled,
                     [&changes] { changes << QStringLiteral("red"); });
    outline().selectRow(0);
    EXPECT_EQ(changes,
              QStringList({QStringLiteral("OwnerR"), QStringLiteral("OthersX"), QStringLiteral("red")}));
}

TEST_F(QNBPrefPanePrefPermissions, UncheckingOwnerWriteOn764Gives5AndCheckingItAgain7)
{
    openWith(permissions(7, 6, 4));
    click(QStringLiteral("OwnerW"), Qt::Unchecked);
    EXPECT_EQ(item(0).customPermissions(), permissions(5, 6, 4));
    click(QStringLiteral("OwnerW"), Qt::Checked);
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 4));
}

TEST_F(QNBPrefPanePrefPermissions, EveryBoxSetsAndClearsItsOwnBit)
{
    openWith(permissions(0, 0, 0));
    for (const QString &name : boxNames)
        click(name, Qt::Checked);
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 7, 7));
    const QList<QVariantMap> expected{permissions(3, 7, 7), permissions(5, 7, 7), permissions(6, 7, 7),
                                      permissions(7, 3, 7), permissions(7, 5, 7), permissions(7, 6, 7),
                                      permissions(7, 7, 3), permissions(7, 7, 5), permissions(7, 7, 6)};
    for (qsizetype i = 0; i < boxNames.size(); ++i) {
        click(boxNames[i], Qt::Unchecked);
        EXPECT_EQ(item(0).customPermissions(), expected[i]) << qPrintable(boxNames[i]);
        click(boxNames[i], Qt::Checked);
    }
}

TEST_F(QNBPrefPanePrefPermissions, ABitThatIsSetOrClearAlreadyStaysAndIsNoStep)
{
    openWith(permissions(7, 6, 4));
    tellOf(QStringLiteral("OwnerR"), Qt::Checked);
    tellOf(QStringLiteral("GroupX"), Qt::Unchecked);
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 4));
    EXPECT_FALSE(undoAction().isEnabled());
}

TEST_F(QNBPrefPanePrefPermissions, AnOwnerDigitOf9ShowsExecuteAloneAndOwnerReadMakesIt13)
{
    openWith(permissions(9, 0, 0));
    EXPECT_EQ(checked(), QStringList{QStringLiteral("OwnerX")});
    click(QStringLiteral("OwnerR"), Qt::Checked);
    EXPECT_EQ(item(0).customPermissions(), permissions(13, 0, 0));
    pane->undo();
    EXPECT_EQ(item(0).customPermissions(), permissions(9, 0, 0));
    EXPECT_EQ(checked(), QStringList{QStringLiteral("OwnerX")});
}

TEST_F(QNBPrefPanePrefPermissions, AMissingDigitCountsAs0)
{
    openWith({{QStringLiteral("g"), 1LL}});
    EXPECT_EQ(checked(), QStringList{QStringLiteral("GroupX")});
    click(QStringLiteral("OthersW"), Qt::Checked);
    EXPECT_EQ(item(0).customPermissions(),
              (QVariantMap{{QStringLiteral("g"), 1LL}, {QStringLiteral("o"), 2LL}}));
}

TEST_F(QNBPrefPanePrefPermissions, ApplyingToAFileChangesThatFileAlone)
{
    openTree();
    outline().selectRow(0);
    box(QStringLiteral("OthersX")).setChecked(true);
    pane->applyPermissionsRecursively();
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 5));
    for (int row = 1; row < outline().numberOfRows(); ++row)
        EXPECT_EQ(item(row).customPermissions(), permissions(7, 6, 4)) << row;
}

TEST_F(QNBPrefPanePrefPermissions, ApplyingToAFolderChangesItAndAllBelowIt)
{
    openTree();
    item(2).setCustomPermissions(permissions(1, 2, 3));
    item(4).setCustomPermissions({});
    outline().selectRow(1);
    box(QStringLiteral("OwnerW")).setChecked(false);
    box(QStringLiteral("GroupW")).setChecked(false);
    QSignalSpy rows(outline().model(), &QAbstractItemModel::dataChanged);
    pane->applyPermissionsRecursively();
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 4));
    for (int row = 1; row < outline().numberOfRows(); ++row)
        EXPECT_EQ(item(row).customPermissions(), permissions(5, 4, 4)) << row;
    EXPECT_EQ(rows.size(), 0);
    EXPECT_TRUE(undoAction().text().endsWith(u" Apply Permissions"));

    outline().selectRow(0);
    pane->undo();
    EXPECT_EQ(item(1).customPermissions(), permissions(7, 6, 4));
    EXPECT_EQ(item(2).customPermissions(), permissions(1, 2, 3));
    EXPECT_EQ(item(3).customPermissions(), permissions(7, 6, 4));
    EXPECT_EQ(item(4).customPermissions(), QVariantMap());
    EXPECT_EQ(outline().selectedRow(), 1);
    EXPECT_TRUE(box(QStringLiteral("OwnerW")).isChecked());
    pane->redo();
    EXPECT_EQ(item(4).customPermissions(), permissions(5, 4, 4));
    EXPECT_FALSE(box(QStringLiteral("OwnerW")).isChecked());
}

TEST_F(QNBPrefPanePrefPermissions, ItemsThatWereAppliedToKeepTheirOwnDigits)
{
    openTree();
    outline().selectRow(1);
    box(QStringLiteral("OthersR")).setChecked(false);
    pane->applyPermissionsRecursively();
    outline().selectRow(4);
    click(QStringLiteral("OthersX"), Qt::Checked);
    EXPECT_EQ(item(4).customPermissions(), permissions(7, 6, 1));
    for (int row = 1; row < 4; ++row)
        EXPECT_EQ(item(row).customPermissions(), permissions(7, 6, 0)) << row;
}

TEST_F(QNBPrefPanePrefPermissions, ApplyingWhatIsThereAlreadyIsNoStepButClosesTheMenu)
{
    openTree();
    outline().selectRow(1);
    menu().popup(QPoint());
    pane->applyPermissionsRecursively();
    EXPECT_FALSE(menu().isVisible());
    EXPECT_FALSE(undoAction().isEnabled());
}

TEST_F(QNBPrefPanePrefPermissions, TheMixedStateCountsAsUnchecked)
{
    openWith(permissions(7, 6, 4));
    tellOf(QStringLiteral("OwnerR"), Qt::PartiallyChecked);
    EXPECT_EQ(item(0).customPermissions(), permissions(3, 6, 4));
    box(QStringLiteral("GroupR")).setCheckState(Qt::PartiallyChecked);
    pane->applyPermissionsRecursively();
    EXPECT_EQ(item(0).customPermissions(), permissions(3, 2, 4));
}

TEST_F(QNBPrefPanePrefPermissions, ACheckboxWithoutATagDoesNothing)
{
    openWith(permissions(0, 0, 0));
    QCheckBox other;
    other.setChecked(true);
    pane->permissionsCheckboxClicked(other);
    EXPECT_EQ(item(0).customPermissions(), permissions(0, 0, 0));
    other.setProperty("tag", 140);
    pane->permissionsCheckboxClicked(other);
    EXPECT_EQ(item(0).customPermissions(), permissions(1, 0, 0));
}

TEST_F(QNBPrefPanePrefPermissions, WithoutASelectionNothingIsChanged)
{
    openTree();
    menu().popup(QPoint());
    tellOf(QStringLiteral("OwnerR"), Qt::Checked);
    pane->applyPermissionsRecursively();
    EXPECT_TRUE(menu().isVisible());
    for (int row = 0; row < outline().numberOfRows(); ++row)
        EXPECT_EQ(item(row).customPermissions(), permissions(7, 6, 4)) << row;
    EXPECT_FALSE(undoAction().isEnabled());
}

TEST_F(QNBPrefPanePrefPermissions, ClicksInTheOpenMenuAreStepsOfTheirOwnAndLeaveItOpen)
{
    openTree();
    outline().selectRow(0);
    openMenu();
    QTest::mouseClick(&box(QStringLiteral("OwnerW")), Qt::LeftButton);
    QTest::mouseClick(&box(QStringLiteral("OthersX")), Qt::LeftButton);
    EXPECT_EQ(item(0).customPermissions(), permissions(5, 6, 5));
    EXPECT_TRUE(menu().isVisible());
    EXPECT_TRUE(undoAction().text().endsWith(u" Permissions"));
    menu().close();
    pane->undo();
    EXPECT_EQ(item(0).customPermissions(), permissions(5, 6, 4));
    EXPECT_FALSE(box(QStringLiteral("OthersX")).isChecked());
    pane->undo();
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 4));
    EXPECT_TRUE(box(QStringLiteral("OwnerW")).isChecked());
    EXPECT_FALSE(undoAction().isEnabled());
    pane->redo();
    EXPECT_EQ(item(0).customPermissions(), permissions(5, 6, 4));
    EXPECT_FALSE(box(QStringLiteral("OwnerW")).isChecked());
}

TEST_F(QNBPrefPanePrefPermissions, AClickOnEachBoxInTheOpenMenuSetsItsBit)
{
    const QStringList keys{QStringLiteral("u"), QStringLiteral("g"), QStringLiteral("o")};
    openWith(permissions(0, 0, 0));
    openMenu();
    for (qsizetype i = 0; i < boxNames.size(); ++i) {
        QTest::mouseClick(&box(boxNames[i]), Qt::LeftButton);
        QVariantMap expected = permissions(0, 0, 0);
        for (qsizetype before = 0; before <= i; ++before)
            expected[keys[before / 3]] = expected[keys[before / 3]].toLongLong() | 4 >> before % 3;
        EXPECT_EQ(item(0).customPermissions(), expected) << qPrintable(boxNames[i]);
    }
}

TEST_F(QNBPrefPanePrefPermissions, ClicksClearAndSetOwnerWriteAndMakeOwnerReadOf9Thirteen)
{
    openWith(permissions(7, 6, 4));
    openMenu();
    QTest::mouseClick(&box(QStringLiteral("OwnerW")), Qt::LeftButton);
    EXPECT_EQ(item(0).customPermissions(), permissions(5, 6, 4));
    QTest::mouseClick(&box(QStringLiteral("OwnerW")), Qt::LeftButton);
    EXPECT_EQ(item(0).customPermissions(), permissions(7, 6, 4));
    menu().close();

    item(0).setCustomPermissions(permissions(9, 0, 0));
    outline().selectRow(OutlineView::noRow);
    outline().selectRow(0);
    openMenu();
    QTest::mouseClick(&box(QStringLiteral("OwnerR")), Qt::LeftButton);
    EXPECT_EQ(item(0).customPermissions(), permissions(13, 0, 0));
}

TEST_F(QNBPrefPanePrefPermissions, TheButtonIsOffForAFileThatHasNothingInside)
{
    openTree();
    const auto *apply = outlet<QPushButton>(QStringLiteral("_ui_applyPermissionsRecursively"));
    EXPECT_FALSE(apply->isEnabled());
    for (int row = 0; row < outline().numberOfRows(); ++row) {
        outline().selectRow(row);
        EXPECT_EQ(apply->isEnabled(), item(row).isDirectory()) << row;
        openMenu();
        EXPECT_EQ(apply->isEnabled(), item(row).isDirectory()) << row;
        menu().close();
    }
}

TEST_F(QNBPrefPanePrefPermissions, TheButtonInTheOpenMenuAppliesAndClosesIt)
{
    openTree();
    outline().selectRow(3);
    openMenu();
    QTest::mouseClick(&box(QStringLiteral("GroupW")), Qt::LeftButton);
    QTest::mouseClick(outlet<QPushButton>(QStringLiteral("_ui_applyPermissionsRecursively")), Qt::LeftButton);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_EQ(item(3).customPermissions(), permissions(7, 4, 4));
    EXPECT_EQ(item(4).customPermissions(), permissions(7, 4, 4));
    EXPECT_EQ(item(2).customPermissions(), permissions(7, 6, 4));
}

} // namespace

TEST_F(QNBPrefPanePrefPermissions, TheBoxesStandOnTheGroundOfALightMenu)
{
    openWith(permissions(7, 6, 4));
    openMenu();
    const QImage image = menu().grab().toImage();
    const auto groundOf = [&](const char *name) {
        return image.pixelColor(outlet<QWidget>(QString::fromLatin1(name))->mapTo(&menu(), QPoint(3, 3)));
    };
    EXPECT_EQ(groundOf("_permissionsGrid"), groundOf("_colorRow"));
}

TEST_F(QNBPrefPanePrefPermissions, UncheckedBoxesCanBeSeenInADarkMenu)
{
    openWith(permissions(7, 6, 4));
    QPalette dark(QColor(0x31, 0x36, 0x3b), QColor(0x31, 0x36, 0x3b));
    dark.setColor(QPalette::Base, QColor(0x1d, 0x1f, 0x22));
    auto *menu = outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu"));
    menu->setPalette(dark);
    outline().selectRow(0);
    menu->popup(view->mapToGlobal(QPoint(0, 0)));

    const QCheckBox &unchecked = box(QStringLiteral("GroupX"));
    ASSERT_FALSE(unchecked.isChecked());
    const QRect place(unchecked.mapTo(menu, QPoint()), unchecked.size());
    const QImage image = menu->grab().toImage();
    const int inside = image.pixelColor(place.center()).lightness();
    const int beside = image.pixelColor(place.topLeft() - QPoint(3, 0)).lightness();
    EXPECT_GE(std::abs(inside - beside), 12);
}

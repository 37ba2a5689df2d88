// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "HierarchyFixture.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Source/Model/QNBHierarchyDepth.h"
#include "Toolkit/ArrayController.h"

#include <QMimeData>
#include <limits>

namespace {

const QString type = QStringLiteral("QNBHierarchyItemDragType");
const QString itemKey = QStringLiteral("item");
const QString indexPathKey = QStringLiteral("indexPath");

/// Drops that no drag of the user's makes: refused, whether they were validated first or not, and the tree is
/// as it was.
class QNBPrefPanePrefHostileDrops : public HierarchyFixture
{
protected:
    void SetUp() override
    {
        openTree({text("a"), text("folder/"), text("folder/inner/"), text("folder/inner/leaf"), text("b")});
    }

    void setData(const QByteArray &bytes)
    {
        Pasteboard pasteboard(data);
        pasteboard.declareTypes({type});
        pasteboard.setDataForType(bytes, type);
    }
    void setArchive(const QVariant &value)
    {
        setData(*KeyedArchiver::archivedDataWithRootObject(value).bytes);
    }
    void setItemAndPath(const QVariant &dragged, const QVariant &path)
    {
        setArchive(QVariantMap{{itemKey, dragged}, {indexPathKey, path}});
    }
    QVariantMap dictionary(const char *path) const { return item(text(path))->toDictionaryWithUID(true); }
    void drag(const char *path)
    {
        Pasteboard pasteboard(data);
        ASSERT_TRUE(pane->outlineViewWriteItemsToPasteboard(outline(), {item(text(path))}, pasteboard));
    }

    bool validate(const OutlineItem &target, int index) const
    {
        return pane->outlineViewValidateDrop(outline(), {data, DragOperation::Every}, target, index) !=
               DragOperation::None;
    }
    bool accept(const OutlineItem &target, int index) const
    {
        return pane->outlineViewAcceptDrop(outline(), {data, DragOperation::Every}, target, index);
    }
    void expectRefusedByAcceptance(const OutlineItem &target = {}, int index = 0) const
    {
        const QVariantMap before = tree();
        const QString step = lastStep();
        EXPECT_FALSE(accept(target, index));
        EXPECT_EQ(tree(), before);
        EXPECT_EQ(lastStep(), step);
    }
    void expectRefused(const OutlineItem &target = {}, int index = 0) const
    {
        EXPECT_FALSE(validate(target, index));
        expectRefusedByAcceptance(target, index);
    }

    QMimeData data;
};

} // namespace

TEST_F(QNBPrefPanePrefHostileDrops, WithoutTheType)
{
    expectRefused();
    data.setText(text("text"));
    expectRefused();
}

TEST_F(QNBPrefPanePrefHostileDrops, NoKeyedArchive)
{
    setData({});
    expectRefused();
    setData("no archive");
    expectRefused();
    setData(*PropertyList::write(dictionary("a")).bytes);
    expectRefused();
    drag("folder");
    setData(data.data(type).chopped(1));
    expectRefused();
}

TEST_F(QNBPrefPanePrefHostileDrops, AnArchiveOfSomethingElse)
{
    setArchive(text("text"));
    expectRefused();
    setArchive(QVariantList{dictionary("a")});
    expectRefused();
    setArchive(dictionary("a"));
    expectRefused();
    setItemAndPath(text("a"), QVariantList{qlonglong(0)});
    expectRefused();
}

TEST_F(QNBPrefPanePrefHostileDrops, APathThatIsTooLongNegativeOutOfRangeOrNoPath)
{
    const QVariantMap a = dictionary("a");
    setItemAndPath(a, QVariantList{qlonglong(0)});
    EXPECT_TRUE(validate({}, 3)) << "the right path is taken";
    for (const QVariant &path :
         {QVariant(QVariantList{}), QVariant(QVariantList{qlonglong(-1)}),
          QVariant(QVariantList{qlonglong(3)}), QVariant(QVariantList{qlonglong(1)}),
          QVariant(QVariantList{qlonglong(1) << 32}),
          QVariant(QVariantList{std::numeric_limits<qulonglong>::max()}),
          QVariant(QVariantList{qlonglong(0), qlonglong(0)}), QVariant(QVariantList{text("0")}),
          QVariant(QVariantList{0.0}), QVariant(QVariantList{false}), QVariant(QVariantList{QVariantList{}}),
          QVariant(QVariantList(100'000, qlonglong(0))), QVariant(qlonglong(0)), QVariant(text("0"))}) {
        setItemAndPath(a, path);
        expectRefused({}, 3);
    }
}

TEST_F(QNBPrefPanePrefHostileDrops, FromAnotherProcessWithThePrivateType)
{
    drag("a");
    QMimeData foreign;
    foreign.setData(type, data.data(type));
    const DraggingInfo info(foreign, DragOperation::Every);
    const QVariantMap before = tree();
    EXPECT_EQ(pane->outlineViewValidateDrop(outline(), info, {}, 3), DragOperation::None);
    EXPECT_FALSE(pane->outlineViewAcceptDrop(outline(), info, {}, 3));
    EXPECT_EQ(tree(), before);
    EXPECT_TRUE(accept({}, 3)) << "the same data from this process";
}

TEST_F(QNBPrefPanePrefHostileDrops, FromAnotherPreset)
{
    drag("a");
    pane->addPreset();
    list().endEditing();
    pane->addFileToPresetHierarchy();
    outline().endEditing();
    expectRefused();
}

TEST_F(QNBPrefPanePrefHostileDrops, FromAPresetThatWasRemovedMeanwhile)
{
    drag("a");
    controller().removeObject(controller().selectedObjects().constFirst());
    ASSERT_EQ(controller().selectionIndex(), ArrayController::noIndex);
    EXPECT_FALSE(validate({}, 0));
    EXPECT_FALSE(accept({}, 0));
    EXPECT_EQ(lastStep(), QString());
}

TEST_F(QNBPrefPanePrefHostileDrops, AnItemThatWasDeletedMeanwhile)
{
    drag("a");
    select(text("a"));
    pane->deleteSelectedItemInPresetHierarchy();
    expectRefused();
    pane->undo();
    EXPECT_TRUE(accept({}, 3));
}

TEST_F(QNBPrefPanePrefHostileDrops, AnItemThatWasChangedMeanwhile)
{
    drag("folder");
    pane->outlineViewSetObjectValue(outline(), text("renamed"), 0, item(text("folder/inner/leaf")));
    expectRefusedByAcceptance();
    pane->undo();
    EXPECT_TRUE(accept({}, 0)) << "taken back, it is the one that was dragged";
}

TEST_F(QNBPrefPanePrefHostileDrops, AnItemWithTheRightIdentifierAndOtherContent)
{
    QVariantMap forged = dictionary("a");
    forged.insert(text("filename"), text("forged"));
    setItemAndPath(forged, QVariantList{qlonglong(0)});
    expectRefusedByAcceptance();
    forged = dictionary("a");
    forged.insert(text("children"), QVariantList{dictionary("b")});
    setItemAndPath(forged, QVariantList{qlonglong(0)});
    expectRefusedByAcceptance();
}

TEST_F(QNBPrefPanePrefHostileDrops, IntoItselfOrADescendantWithoutValidation)
{
    drag("folder");
    for (const char *path : {"folder", "folder/inner"}) {
        expectRefused(item(text(path)), -1);
        drag("folder");
        expectRefusedByAcceptance(item(text(path)), 0);
        drag("folder");
    }
}

TEST_F(QNBPrefPanePrefHostileDrops, IntoAFileWithoutValidation)
{
    drag("a");
    expectRefused(item(text("b")), -1);
}

TEST_F(QNBPrefPanePrefHostileDrops, IntoAFolderThatIsGone)
{
    const QNBHierarchyItemPtr inner = item(text("folder/inner"));
    select(text("folder"));
    pane->deleteSelectedItemInPresetHierarchy();
    drag("a");
    expectRefusedByAcceptance(inner, 0);
    drag("a");
    expectRefusedByAcceptance(treeOf({}), 0);
    EXPECT_EQ(inner->numberOfChildren(), 1U);
}

TEST_F(QNBPrefPanePrefHostileDrops, WhatWouldMakeThePresetDeeperThanCanBeStored)
{
    const auto chain = [](int length) {
        QStringList paths;
        QNBHierarchyItemPtr top = treeOf({text("deep/")})->childAtIndex(0);
        for (int depth = 1; depth < length; ++depth) {
            const QNBHierarchyItemPtr above = treeOf({text("deep/")})->childAtIndex(0);
            above->addChild(top);
            top = above;
        }
        return top;
    };
    const QNBHierarchyItemPtr deep = chain(QNBHierarchyDepth::deepest - 1);
    QNBHierarchyItemPtr end = deep;
    while (end->numberOfChildren() > 0)
        end = end->childAtIndex(0);
    // Beside what is shown: thousands of levels need no window for this.
    root()->addChild(deep);
    drag("a");
    EXPECT_TRUE(validate(end, 0)) << "the last level that can be stored";
    drag("folder");
    expectRefused(end, 0);
    drag("folder/inner/leaf");
    EXPECT_TRUE(accept(end, 0));
    EXPECT_EQ(QNBHierarchyDepth::ofItem(*end->childAtIndex(0)), QNBHierarchyDepth::deepest);
    drag("deep");
    expectRefused(item(text("folder")), 0);
}

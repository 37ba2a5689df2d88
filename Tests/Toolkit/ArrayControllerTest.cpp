// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/ArrayController.h"

#include "FakeRecord.h"

#include <QSignalSpy>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

class ArrayControllerTest : public ::testing::Test
{
protected:
    ArrayControllerTest()
    {
        controller.setContent({FakeRecord::labelled(QStringLiteral("a")),
                               FakeRecord::labelled(QStringLiteral("b")),
                               FakeRecord::labelled(QStringLiteral("c"))});
    }

    QString labels() const
    {
        QString all;
        for (const ArrayController::Object &object : controller.arrangedObjects())
            all += object->valueForKey(labelKey).toString();
        return all;
    }

    QString selectedLabel() const
    {
        const QList<ArrayController::Object> selected = controller.selectedObjects();
        return selected.isEmpty() ? QString() : selected.constFirst()->valueForKey(labelKey).toString();
    }

    ArrayController controller;
};

TEST_F(ArrayControllerTest, ContentSelectsTheFirst)
{
    EXPECT_EQ(selectedLabel(), u"a");
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    controller.setContent({});
    EXPECT_EQ(controller.selectionIndex(), ArrayController::noIndex);
    EXPECT_TRUE(controller.selectedObjects().isEmpty());
    EXPECT_EQ(selection.count(), 1);
    controller.setContent({});
    EXPECT_EQ(selection.count(), 1) << "nothing was selected before, and nothing is now";
}

TEST_F(ArrayControllerTest, AddAppendsAndSelects)
{
    QSignalSpy inserted(&controller, &ArrayController::objectInserted);
    controller.addObject(FakeRecord::labelled(QStringLiteral("d")));
    EXPECT_EQ(labels(), u"abcd");
    EXPECT_EQ(selectedLabel(), u"d");
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted.constFirst().constFirst().toInt(), 3);
}

TEST_F(ArrayControllerTest, InsertStaysWithinTheList)
{
    controller.insertObject(FakeRecord::labelled(QStringLiteral("1")), 1);
    EXPECT_EQ(labels(), u"a1bc");
    controller.insertObject(FakeRecord::labelled(QStringLiteral("<")), -5);
    controller.insertObject(FakeRecord::labelled(QStringLiteral(">")), 99);
    EXPECT_EQ(labels(), u"<a1bc>");
    EXPECT_EQ(selectedLabel(), u">");
}

TEST_F(ArrayControllerTest, RemovingBeforeTheSelectionKeepsTheSelectedObject)
{
    controller.setSelectionIndex(2);
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    controller.removeObject(controller.arrangedObjects().constFirst());
    EXPECT_EQ(labels(), u"bc");
    EXPECT_EQ(selectedLabel(), u"c");
    EXPECT_EQ(controller.selectionIndex(), 1);
    EXPECT_EQ(selection.count(), 0);
}

TEST_F(ArrayControllerTest, RemoveSelectsTheNextElseTheLastElseNone)
{
    controller.setSelectionIndex(1);
    controller.remove();
    EXPECT_EQ(labels(), u"ac");
    EXPECT_EQ(selectedLabel(), u"c");
    controller.remove();
    EXPECT_EQ(selectedLabel(), u"a");
    controller.remove();
    EXPECT_EQ(controller.selectionIndex(), ArrayController::noIndex);
    controller.remove();
    EXPECT_TRUE(controller.arrangedObjects().isEmpty());
}

TEST_F(ArrayControllerTest, RemovingAStrangerChangesNothing)
{
    controller.removeObject(FakeRecord::labelled(QStringLiteral("a")));
    EXPECT_EQ(labels(), u"abc");
}

TEST_F(ArrayControllerTest, SelectingOutsideTheListSelectsNothing)
{
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    controller.setSelectionIndex(3);
    EXPECT_EQ(controller.selectionIndex(), ArrayController::noIndex);
    controller.setSelectionIndex(-7);
    EXPECT_EQ(selection.count(), 1);
}

TEST_F(ArrayControllerTest, SettingAValueReachesTheRecordAndTheViews)
{
    QSignalSpy changed(&controller, &ArrayController::objectChanged);
    controller.setValueForKey(QStringLiteral("B"), labelKey, 1);
    EXPECT_EQ(labels(), u"aBc");
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.constFirst(), QVariantList({1, labelKey}));
    controller.setValueForKey(QStringLiteral("?"), labelKey, 3);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(ArrayControllerTest, ListAndSelectionAgreeWhenSelectionChangedIsSent)
{
    QStringList seen;
    QObject::connect(&controller, &ArrayController::selectionChanged, &controller,
                     [&] { seen << labels() + u':' + selectedLabel(); });
    controller.addObject(FakeRecord::labelled(QStringLiteral("d")));
    controller.remove();
    EXPECT_EQ(seen, QStringList({QStringLiteral("abcd:d"), QStringLiteral("abc:c")}));
}

TEST_F(ArrayControllerTest, ChangesThatBelongTogetherTellTheSelectionOnce)
{
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    QSignalSpy inserted(&controller, &ArrayController::objectInserted);
    {
        const ArrayController::Changes changes(controller);
        controller.insertObject(FakeRecord::labelled(QStringLiteral("d")), 0);
        {
            const ArrayController::Changes inner(controller);
            controller.insertObject(FakeRecord::labelled(QStringLiteral("e")), 0);
        }
        EXPECT_EQ(inserted.count(), 2);
        EXPECT_EQ(selection.count(), 0);
    }
    EXPECT_EQ(selection.count(), 1);
    EXPECT_EQ(labels(), u"edabc");
    EXPECT_EQ(selectedLabel(), u"e");
}

TEST_F(ArrayControllerTest, ChangesThatLeaveTheSameRecordSelectedTellNoSelection)
{
    QSignalSpy selection(&controller, &ArrayController::selectionChanged);
    {
        const ArrayController::Changes changes(controller);
        const ArrayController::Object first = controller.arrangedObjects().constFirst();
        controller.removeObject(first);
        controller.insertObject(first, 2);
    }
    EXPECT_EQ(selection.count(), 0);
    EXPECT_EQ(labels(), u"bca");
    EXPECT_EQ(selectedLabel(), u"a");
}

} // namespace

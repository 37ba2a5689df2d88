// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBAttributeCommands.h"

#include "RecordingObserver.h"

#include <QUndoStack>
#include <gtest/gtest.h>

namespace {

QVariantMap digits(int owner, int group, int others)
{
    return {{QStringLiteral("u"), owner}, {QStringLiteral("g"), group}, {QStringLiteral("o"), others}};
}

QNBHierarchyItemPtr named(const QString &name)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    item->setFilename(name);
    return item;
}

} // namespace

TEST(QNBAttributeCommands, EachTextIsSetTakenBackAndSetAgain)
{
    const QNBHierarchyItemPtr item = named(QStringLiteral("old"));
    item->setColorName(QStringLiteral("red"));
    item->setContentFilename(QStringLiteral("letter.txt"));
    RecordingObserver observer;
    QUndoStack history;
    for (const auto &attribute : {QNBSetItemTextCommand::filename, QNBSetItemTextCommand::colorName,
                                  QNBSetItemTextCommand::contentFilename}) {
        const QVariantMap before = item->toDictionaryWithUID(true);
        history.push(new QNBSetItemTextCommand(observer, {}, item, attribute, QStringLiteral("new"),
                                               QStringLiteral("Change")));
        EXPECT_EQ((item.get()->*attribute.get)(), QStringLiteral("new"));
        EXPECT_EQ(observer.take(), QStringList{QStringLiteral("changed %1").arg(item->filename())});
        const QVariantMap after = item->toDictionaryWithUID(true);
        history.undo();
        EXPECT_EQ(item->toDictionaryWithUID(true), before);
        history.redo();
        EXPECT_EQ(item->toDictionaryWithUID(true), after);
        observer.take();
    }
}

TEST(QNBAttributeCommands, PermissionsOfManyItemsComeBackOneByOne)
{
    QNBHierarchyItem::Children items;
    const QList<QVariantMap> before{
        digits(7, 6, 4), digits(7, 6, 4), digits(0, 0, 0), digits(7, 6, 4), {{QStringLiteral("u"), 9}}};
    for (const QVariantMap &permissions : before) {
        items.push_back(named(QStringLiteral("item")));
        items.back()->setCustomPermissions(permissions);
    }
    const auto current = [&items] {
        QList<QVariantMap> result;
        for (const QNBHierarchyItemPtr &item : items)
            result << item->customPermissions();
        return result;
    };
    const QList<QVariantMap> original = current();
    RecordingObserver observer;
    QUndoStack history;
    history.push(new QNBSetPermissionsCommand(observer, {}, items.front(), items, digits(5, 5, 5),
                                              QStringLiteral("Apply")));
    EXPECT_EQ(observer.take(), QStringList());
    const QList<QVariantMap> after = current();
    EXPECT_EQ(after, QList<QVariantMap>(5, after.constFirst()));
    EXPECT_EQ(after.constFirst().value(QStringLiteral("g")).toInt(), 5);
    history.undo();
    EXPECT_EQ(current(), original);
    history.redo();
    EXPECT_EQ(current(), after);
}

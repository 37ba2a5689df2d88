// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBPresetListCommands.h"

#include "Toolkit/ArrayController.h"

#include <QUndoStack>
#include <gtest/gtest.h>

namespace {

const QString stepText = QStringLiteral("Step");

QNBPresetRecordPtr presetCalled(const QString &label)
{
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(label, QNBPresetKey::label);
    return record;
}

class QNBPresetListCommands : public ::testing::Test
{
protected:
    QNBPresetListCommands() { controller.setContent({a, b, c}); }

    QList<ArrayController::Object> list() const { return controller.arrangedObjects(); }

    const QNBPresetRecordPtr a = presetCalled(QStringLiteral("a"));
    const QNBPresetRecordPtr b = presetCalled(QStringLiteral("b"));
    const QNBPresetRecordPtr c = presetCalled(QStringLiteral("c"));
    ArrayController controller;
    QUndoStack history;
};

} // namespace

TEST_F(QNBPresetListCommands, InsertedPresetsStandInReverseOrderAndLeaveTogether)
{
    const QNBPresetRecordPtr x = presetCalled(QStringLiteral("x"));
    const QNBPresetRecordPtr y = presetCalled(QStringLiteral("y"));
    controller.setSelectionIndex(2);
    history.push(new QNBInsertPresetsCommand(controller, {x, y}, 1, stepText));
    EXPECT_EQ(list(), (QList<ArrayController::Object>{a, y, x, b, c}));
    EXPECT_EQ(controller.selectionIndex(), 1);
    history.undo();
    EXPECT_EQ(list(), (QList<ArrayController::Object>{a, b, c}));
    EXPECT_EQ(controller.selectionIndex(), 2);
    history.redo();
    EXPECT_EQ(list(), (QList<ArrayController::Object>{a, y, x, b, c}));
}

TEST_F(QNBPresetListCommands, ARemovedPresetComesBackToItsPlaceAndIsSelected)
{
    for (int index = 0; index < 3; ++index) {
        history.push(new QNBRemovePresetCommand(controller, index, stepText));
        EXPECT_EQ(list().size(), 2);
        controller.setSelectionIndex(ArrayController::noIndex);
        history.undo();
        EXPECT_EQ(list(), (QList<ArrayController::Object>{a, b, c})) << index;
        EXPECT_EQ(controller.selectionIndex(), index);
    }
}

TEST_F(QNBPresetListCommands, AMovedPresetMovesBack)
{
    for (int from = 0; from < 3; ++from) {
        for (int to = 0; to < 3; ++to) {
            QList<ArrayController::Object> expected{a, b, c};
            expected.move(from, to);
            history.push(new QNBMovePresetCommand(controller, from, to, stepText));
            EXPECT_EQ(list(), expected) << from << " to " << to;
            EXPECT_EQ(controller.selectionIndex(), to);
            history.undo();
            EXPECT_EQ(list(), (QList<ArrayController::Object>{a, b, c})) << from << " to " << to;
        }
    }
}

TEST_F(QNBPresetListCommands, AValueIsSetThroughTheControllerAndMayHaveBeenAbsent)
{
    QStringList changes;
    QObject::connect(&controller, &ArrayController::objectChanged, &controller,
                     [&changes](int index, const QString &key) {
                         changes << QStringLiteral("%1 %2").arg(index).arg(key);
                     });
    history.push(new QNBSetPresetValueCommand(controller, b, QNBPresetKey::scriptFile,
                                              QStringLiteral("Say.sh"), stepText));
    EXPECT_EQ(b->valueForKey(QNBPresetKey::scriptFile), QStringLiteral("Say.sh"));
    history.undo();
    EXPECT_FALSE(b->values().contains(QNBPresetKey::scriptFile));
    EXPECT_EQ(changes, QStringList(2, QStringLiteral("1 scriptFile")));
}

TEST_F(QNBPresetListCommands, WhatIsTypedInOneGoIsOneStep)
{
    const auto type = [this](const QNBPresetRecordPtr &record, const QString &value, int typing) {
        history.push(new QNBSetPresetValueCommand(controller, record, QNBPresetKey::presetDescription, value,
                                                  stepText, typing));
    };
    type(a, QStringLiteral("f"), 1);
    type(a, QStringLiteral("fo"), 1);
    EXPECT_EQ(history.count(), 1);
    type(a, QStringLiteral("foo"), 2);
    EXPECT_EQ(history.count(), 2);
    type(b, QStringLiteral("bar"), 2);
    EXPECT_EQ(history.count(), 3);

    history.undo();
    history.undo();
    EXPECT_EQ(a->valueForKey(QNBPresetKey::presetDescription), QStringLiteral("fo"));
    history.undo();
    EXPECT_FALSE(a->values().contains(QNBPresetKey::presetDescription));
}

TEST_F(QNBPresetListCommands, TypingThatChangesNothingInTheEndIsNoStep)
{
    for (const QVariant &value : {QVariant(QStringLiteral("f")), QVariant()}) {
        history.push(
            new QNBSetPresetValueCommand(controller, a, QNBPresetKey::presetDescription, value, stepText, 1));
    }
    EXPECT_EQ(history.count(), 0);
}

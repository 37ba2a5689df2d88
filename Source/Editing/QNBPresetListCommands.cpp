// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBPresetListCommands.h"

#include "Toolkit/ArrayController.h"

#include <utility>

QNBInsertPresetsCommand::QNBInsertPresetsCommand(ArrayController &controller,
                                                 QList<QNBPresetRecordPtr> presets, int index,
                                                 const QString &text)
    : QUndoCommand(text)
    , controller_(controller)
    , presets_(std::move(presets))
    , index_(index)
    , selectionBefore_(controller.selectionIndex())
{
}

void QNBInsertPresetsCommand::redo()
{
    const ArrayController::Changes changes(controller_);
    for (const QNBPresetRecordPtr &preset : std::as_const(presets_))
        controller_.insertObject(preset, index_);
}

void QNBInsertPresetsCommand::undo()
{
    const ArrayController::Changes changes(controller_);
    for (auto preset = presets_.crbegin(); preset != presets_.crend(); ++preset)
        controller_.removeObject(*preset);
    controller_.setSelectionIndex(selectionBefore_);
}

QNBRemovePresetCommand::QNBRemovePresetCommand(ArrayController &controller, int index, const QString &text)
    : QUndoCommand(text)
    , controller_(controller)
    , preset_(std::static_pointer_cast<QNBPresetRecord>(controller.arrangedObjects().at(index)))
    , index_(index)
{
}

void QNBRemovePresetCommand::redo()
{
    controller_.setSelectionIndex(index_);
    controller_.remove();
}

void QNBRemovePresetCommand::undo()
{
    controller_.insertObject(preset_, index_);
}

QNBMovePresetCommand::QNBMovePresetCommand(ArrayController &controller, int from, int to, const QString &text)
    : QUndoCommand(text)
    , controller_(controller)
    , from_(from)
    , to_(to)
{
}

void QNBMovePresetCommand::move(int from, int to) const
{
    const ArrayController::Changes changes(controller_);
    const ArrayController::Object preset = controller_.arrangedObjects().at(from);
    controller_.removeObject(preset);
    controller_.insertObject(preset, to);
}

QNBReplacePresetsCommand::QNBReplacePresetsCommand(ArrayController &controller,
                                                   QList<QNBPresetRecordPtr> presets, const QString &text,
                                                   std::function<void()> exchangeMore)
    : QUndoCommand(text)
    , controller_(controller)
    , others_(std::move(presets))
    , selection_(others_.isEmpty() ? ArrayController::noIndex : 0)
    , exchangeMore_(std::move(exchangeMore))
{
}

void QNBReplacePresetsCommand::exchange()
{
    const ArrayController::Changes changes(controller_);
    QList<QNBPresetRecordPtr> present;
    for (const ArrayController::Object &object : controller_.arrangedObjects())
        present.append(std::static_pointer_cast<QNBPresetRecord>(object));
    const int selected = std::exchange(selection_, controller_.selectionIndex());
    controller_.setContent({others_.begin(), others_.end()});
    controller_.setSelectionIndex(selected);
    others_ = present;
    if (exchangeMore_)
        exchangeMore_();
}

QNBSetPresetValueCommand::QNBSetPresetValueCommand(ArrayController &controller, QNBPresetRecordPtr preset,
                                                   QString key, QVariant value, const QString &text,
                                                   int typing)
    : QUndoCommand(text)
    , controller_(controller)
    , preset_(std::move(preset))
    , key_(std::move(key))
    , oldValue_(preset_->valueForKey(key_))
    , newValue_(std::move(value))
    , typing_(typing)
{
}

void QNBSetPresetValueCommand::redo()
{
    set(newValue_);
}

void QNBSetPresetValueCommand::undo()
{
    set(oldValue_);
}

bool QNBSetPresetValueCommand::mergeWith(const QUndoCommand *other)
{
    // The history only offers commands of the same number.
    const auto *next = static_cast<const QNBSetPresetValueCommand *>(other);
    if (next->preset_ != preset_ || next->key_ != key_)
        return false;
    newValue_ = next->newValue_;
    setObsolete(newValue_ == oldValue_);
    return true;
}

void QNBSetPresetValueCommand::set(const QVariant &value) const
{
    const auto index = static_cast<int>(controller_.arrangedObjects().indexOf(preset_));
    controller_.setSelectionIndex(index);
    controller_.setValueForKey(value, key_, index);
}

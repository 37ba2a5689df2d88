// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetRecord.h"

#include <QList>
#include <QUndoCommand>
#include <functional>

class ArrayController;

// The steps of the history that concern the list of presets. They act through the list's controller, so that
// its selection follows; what they concern is selected afterwards. The controller has to outlive them.

/// Presets come into the list, each at the same index: the last one stands first.
class QNBInsertPresetsCommand final : public QUndoCommand
{
public:
    QNBInsertPresetsCommand(ArrayController &controller, QList<QNBPresetRecordPtr> presets, int index,
                            const QString &text);
    void redo() override;
    void undo() override;

private:
    ArrayController &controller_;
    QList<QNBPresetRecordPtr> presets_;
    int index_;
    int selectionBefore_;
};

/// A preset leaves the list.
class QNBRemovePresetCommand final : public QUndoCommand
{
public:
    QNBRemovePresetCommand(ArrayController &controller, int index, const QString &text);
    void redo() override;
    void undo() override;

private:
    ArrayController &controller_;
    QNBPresetRecordPtr preset_;
    int index_;
};

/// A preset takes another place in the list.
class QNBMovePresetCommand final : public QUndoCommand
{
public:
    /// \a to is the preset's index afterwards.
    QNBMovePresetCommand(ArrayController &controller, int from, int to, const QString &text);
    void redo() override { move(from_, to_); }
    void undo() override { move(to_, from_); }

private:
    void move(int from, int to) const;

    ArrayController &controller_;
    int from_;
    int to_;
};

/// All presets give way to others, of which the first is selected.
class QNBReplacePresetsCommand final : public QUndoCommand
{
public:
    /// \a exchangeMore, if given, is called each time: exchanges what gives way together with the presets.
    QNBReplacePresetsCommand(ArrayController &controller, QList<QNBPresetRecordPtr> presets,
                             const QString &text, std::function<void()> exchangeMore = {});
    void redo() override { exchange(); }
    void undo() override { exchange(); }

private:
    void exchange();

    ArrayController &controller_;
    /// Those that are not in the list now, and which of them is selected when they come.
    QList<QNBPresetRecordPtr> others_;
    int selection_;
    std::function<void()> exchangeMore_;
};

/// One attribute of a preset: its label, script or description.
class QNBSetPresetValueCommand final : public QUndoCommand
{
public:
    /// What is typed in one go: commands of the same number become one step.
    static constexpr int alone = -1;

    /// An invalid \a value removes the key.
    QNBSetPresetValueCommand(ArrayController &controller, QNBPresetRecordPtr preset, QString key,
                             QVariant value, const QString &text, int typing = alone);
    void redo() override;
    void undo() override;
    int id() const override { return typing_; }
    bool mergeWith(const QUndoCommand *other) override;

private:
    void set(const QVariant &value) const;

    ArrayController &controller_;
    QNBPresetRecordPtr preset_;
    QString key_;
    QVariant oldValue_;
    QVariant newValue_;
    int typing_;
};

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/KeyCodes.h"

#include <QKeyCombination>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QKeyEvent;
class QLabel;
class QPushButton;
class QToolButton;
QT_END_NAMESPACE

/// Holds one key combination, shows it as the present layout of the keyboard names it, and records another:
/// press the button, then the keys. Escape keeps the old combination, Delete takes it away. What cannot be
/// taken is refused in words below; what nearly every program uses has to be pressed twice.
class KeyComboRecorder final : public QWidget
{
    Q_OBJECT

public:
    explicit KeyComboRecorder(QWidget *parent = nullptr);

    /// Exactly what was set or recorded, also where this keyboard has no such key.
    KeyCombo keyCombo() const { return combo_; }
    void setKeyCombo(const KeyCombo &combo);
    bool isRecording() const;

Q_SIGNALS:
    /// The user chose another combination, or none.
    void keyComboDidChange(const KeyCombo &combo);
    void recordingChanged(bool isRecording);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void updateTexts();
    /// Whether the key was ours.
    bool takeKey(const QKeyEvent &event);
    void takeCombo(const KeyCombo &combo, QKeyCombination keys);
    void remark(const QString &words);
    void choose(const KeyCombo &combo);

    KeyCombo combo_;
    /// Chosen if it is pressed again.
    KeyCombo doubtful_;
    QPushButton *field_;
    QToolButton *clearButton_;
    QLabel *remark_;
};

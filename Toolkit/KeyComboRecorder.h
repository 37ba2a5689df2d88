// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/KeyCodes.h"

#include <QWidget>

QT_BEGIN_NAMESPACE
class QPushButton;
class QToolButton;
QT_END_NAMESPACE

/// Holds one key combination, shows it in words, and records another: press the button, then the keys. Escape
/// keeps the old combination, Delete takes it away.
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

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void updateTexts();
    void takeKeys(QKeyCombination keys);
    void choose(const KeyCombo &combo);

    KeyCombo combo_;
    QPushButton *field_;
    QToolButton *clearButton_;
};

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboRecorder.h"

#include "Toolkit/KeyComboText.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QToolButton>

namespace {

/// Room for most combinations, so that the control keeps its size while recording.
constexpr int fieldWidth = 200;

bool isModifierKey(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Meta || key == Qt::Key_Alt ||
           key == Qt::Key_AltGr || key == Qt::Key_CapsLock || key == Qt::Key_unknown || key == 0;
}

bool isFocusKey(const QKeyEvent &event)
{
    const bool isPlain = (event.modifiers() & ~Qt::ShiftModifier) == 0;
    return isPlain && (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab);
}

// A hot key without a modifier would take a key away from every program; function keys are made for it.
bool mayStandAlone(const QKeyCombination &keys)
{
    return keys.key() >= Qt::Key_F1 && keys.key() <= Qt::Key_F35;
}

} // namespace

KeyComboRecorder::KeyComboRecorder(QWidget *parent)
    : QWidget(parent)
    , field_(new QPushButton(this))
    , clearButton_(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(field_);
    layout->addWidget(clearButton_);
    field_->setCheckable(true);
    field_->setMinimumWidth(fieldWidth);
    field_->setAutoDefault(false);
    field_->installEventFilter(this);
    clearButton_->setText(tr("Clear"));
    clearButton_->setToolTip(tr("Use no shortcut"));
    clearButton_->setAccessibleName(tr("Clear shortcut"));
    setFocusProxy(field_);
    // A label leads to what takes the keyboard, whoever that is.
    setFocusPolicy(Qt::StrongFocus);
    connect(field_, &QPushButton::toggled, this, &KeyComboRecorder::updateTexts);
    connect(clearButton_, &QToolButton::clicked, this, [this] { choose({}); });
    updateTexts();
}

void KeyComboRecorder::setKeyCombo(const KeyCombo &combo)
{
    combo_ = combo;
    field_->setChecked(false);
    updateTexts();
}

bool KeyComboRecorder::isRecording() const
{
    return field_->isChecked();
}

bool KeyComboRecorder::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != field_ || !isRecording())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // The keys are ours, not the window's.
        event->accept();
        return true;
    case QEvent::KeyPress: {
        const auto *keyEvent = static_cast<QKeyEvent *>(event);
        // Nobody without a mouse may be caught here.
        if (isFocusKey(*keyEvent))
            return false;
        if (!isModifierKey(keyEvent->key()))
            takeKeys(keyEvent->keyCombination());
        return true;
    }
    case QEvent::KeyRelease:
        return true;
    case QEvent::FocusOut:
        field_->setChecked(false);
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void KeyComboRecorder::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        updateTexts();
}

void KeyComboRecorder::updateTexts()
{
    const QString words = combo_.isEmpty() ? tr("None") : keyComboText(combo_);
    field_->setText(isRecording() ? tr("Press the keys…") : words);
    field_->setAccessibleName(accessibleName().isEmpty() ? tr("Shortcut") : accessibleName());
    field_->setAccessibleDescription(words);
    field_->setToolTip(tr("Press to record another shortcut"));
    clearButton_->setEnabled(!combo_.isEmpty());
}

void KeyComboRecorder::takeKeys(QKeyCombination keys)
{
    const bool isPlain = (keys.keyboardModifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
    if (isPlain && keys.key() == Qt::Key_Escape) {
        field_->setChecked(false);
    } else if (isPlain && (keys.key() == Qt::Key_Delete || keys.key() == Qt::Key_Backspace)) {
        choose({});
    } else if (!isPlain || mayStandAlone(keys)) {
        if (const std::optional<KeyCombo> combo = KeyCodes::fromQt(keys))
            choose(*combo);
    }
}

void KeyComboRecorder::choose(const KeyCombo &combo)
{
    const bool isOther = combo != combo_;
    setKeyCombo(combo);
    if (isOther)
        Q_EMIT keyComboDidChange(combo);
}

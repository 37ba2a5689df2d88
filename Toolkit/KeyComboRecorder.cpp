// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboRecorder.h"

#include "Toolkit/KeyComboRules.h"
#include "Toolkit/KeyComboText.h"
#include "Toolkit/PlainText.h"

#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QToolButton>

namespace {

/// Room for most combinations, so that the control keeps its size while recording.
constexpr int fieldWidth = 200;

bool isFocusKey(const QKeyEvent &event)
{
    const bool isPlain = (event.modifiers() & ~Qt::ShiftModifier) == 0;
    return isPlain && (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab);
}

// An ampersand would be taken for the mark of a mnemonic.
QString buttonText(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

KeyComboRecorder::KeyComboRecorder(QWidget *parent)
    : QWidget(parent)
    , field_(new QPushButton(this))
    , clearButton_(new QToolButton(this))
    , remark_(PlainText::label({}, this))
{
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(field_, 0, 0);
    layout->addWidget(clearButton_, 0, 1, Qt::AlignLeft);
    layout->addWidget(remark_, 1, 0, 1, 2);
    layout->setColumnStretch(1, 1);
    remark_->setWordWrap(true);
    remark_->hide();
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
    connect(field_, &QPushButton::toggled, this, [this](bool isOn) {
        remark({});
        Q_EMIT recordingChanged(isOn);
    });
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
    case QEvent::KeyPress:
        return takeKey(*static_cast<QKeyEvent *>(event));
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

void KeyComboRecorder::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The layout may have changed.
    updateTexts();
}

void KeyComboRecorder::updateTexts()
{
    // To ask the display for its layout takes milliseconds, which a window that opens elsewhere need not wait.
    if (!isVisible())
        return;
    const QString words = combo_.isEmpty() ? tr("None") : keyComboText(combo_, KeyboardLayout::active());
    field_->setText(buttonText(isRecording() ? tr("Press the keys…") : words));
    field_->setAccessibleName(accessibleName().isEmpty() ? tr("Shortcut") : accessibleName());
    field_->setAccessibleDescription(remark_->text().isEmpty() ? words : remark_->text());
    field_->setToolTip(tr("Press to record another shortcut"));
    clearButton_->setEnabled(!combo_.isEmpty());
}

bool KeyComboRecorder::takeKey(const QKeyEvent &event)
{
    // Nobody without a mouse may be caught here.
    if (isFocusKey(event))
        return false;
    if (event.isAutoRepeat() || KeyComboRules::isModifier(Qt::Key(event.key())))
        return true;
    const bool isPlain = (event.modifiers() & ~Qt::KeypadModifier) == 0;
    const KeyCodes::Key *key = KeyCodes::pressed(event.nativeScanCode(), event.keyCombination());
    if (isPlain && event.key() == Qt::Key_Escape)
        field_->setChecked(false);
    else if (isPlain && (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace))
        choose({});
    else if (key)
        takeCombo({KeyCodes::flagsOf(event.modifiers()), key->code}, event.keyCombination());
    else
        remark(tr("This key cannot be used in a shortcut."));
    return true;
}

void KeyComboRecorder::takeCombo(const KeyCombo &combo, QKeyCombination keys)
{
    const auto name = [&combo] { return keyComboText(combo, KeyboardLayout::active()); };
    const bool isConfirmed = combo == doubtful_;
    if (KeyComboRules::needsModifier(combo)) {
        remark(tr("Every program needs %1. Press it together with Ctrl, Alt or Meta.").arg(name()));
    } else if (const QString meaning = KeyComboRules::usualMeaning(combo, keys);
               !meaning.isEmpty() && !isConfirmed) {
        remark(tr("Most programs use %1 for \"%2\". Press it again to take it all the same.")
                   .arg(name(), meaning));
        doubtful_ = combo;
    } else {
        choose(combo);
    }
}

void KeyComboRecorder::remark(const QString &words)
{
    doubtful_ = {};
    remark_->setText(words);
    remark_->setVisible(!words.isEmpty());
    updateTexts();
}

void KeyComboRecorder::choose(const KeyCombo &combo)
{
    const bool isOther = combo != combo_;
    setKeyCombo(combo);
    if (isOther)
        Q_EMIT keyComboDidChange(combo);
}

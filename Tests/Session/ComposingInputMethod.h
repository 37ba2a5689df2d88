// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QApplication>
#include <QInputMethodEvent>
#include <QWidget>

#include <private/qinputmethod_p.h>
#include <qpa/qplatforminputcontext.h>

/// The input method of this program while one of these lives. It keeps what the user composes until it is
/// told to commit it, as those for Japanese or Chinese do.
class ComposingInputMethod final : public QPlatformInputContext
{
public:
    ComposingInputMethod() { current() = this; }
    ~ComposingInputMethod() override { current() = nullptr; }

    bool isValid() const override { return true; }
    /// The user composes \a text in the widget that has the keyboard.
    void compose(const QString &text)
    {
        composed_ = text;
        QInputMethodEvent event(text, {});
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    }
    void commit() override
    {
        if (composed_.isEmpty())
            return;
        QInputMethodEvent event;
        event.setCommitString(std::exchange(composed_, {}));
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    }

private:
    static QPlatformInputContext *&current()
    {
        return QInputMethodPrivate::get(QGuiApplication::inputMethod())->testContext;
    }

    QString composed_;
};

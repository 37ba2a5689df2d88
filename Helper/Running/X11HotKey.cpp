// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/X11HotKey.h"

#include "Helper/Running/X11Keyboard.h"
#include "Helper/Running/XConnection.h"
#include "Keyboard/LayoutKeys.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

template <typename Reply>
using Freed = std::unique_ptr<Reply, decltype(&std::free)>;

/// Empty, or the reason why it could not.
QString grabOnServer(const X11HotKey::Grab &grab)
{
    constexpr quint8 reportsToGrabWindow = 1;
    xcb_connection_t *connection = XConnection::get();
    const Freed<xcb_generic_error_t> error(
        xcb_request_check(connection,
                          xcb_grab_key_checked(connection, reportsToGrabWindow, XConnection::rootWindow(),
                                               grab.modifiers, grab.key, XCB_GRAB_MODE_ASYNC,
                                               XCB_GRAB_MODE_ASYNC)),
        &std::free);
    if (!error)
        return {};
    return error->error_code == XCB_ACCESS
               ? QStringLiteral("another program has it")
               : QStringLiteral("the X server says error %1").arg(error->error_code);
}

void ungrabOnServer(const X11HotKey::Grab &grab)
{
    xcb_ungrab_key(XConnection::get(), grab.key, XConnection::rootWindow(), grab.modifiers);
}

} // namespace

X11HotKey::X11HotKey(Handlers handlers)
    : handlers_(std::move(handlers))
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11HotKey::~X11HotKey()
{
    QCoreApplication::instance()->removeNativeEventFilter(this);
    release();
}

QString X11HotKey::name() const
{
    return QStringLiteral("a grab on the X screen");
}

void X11HotKey::grab(const KeyCombo &combo)
{
    combo_ = combo;
    if (const QString reason = grabNow(); !reason.isEmpty())
        handlers_.refused(reason);
    else
        handlers_.granted({});
}

void X11HotKey::keyboardChanged()
{
    // Its modifiers may be others, and the key that gives a character.
    const bool wasHeard = !grabs_.isEmpty();
    const QString reason = grabNow();
    if (wasHeard && !reason.isEmpty())
        handlers_.lost(reason);
    else if (!wasHeard && reason.isEmpty())
        handlers_.granted({});
}

QString X11HotKey::grabNow()
{
    const X11Keyboard keyboard;
    const quint16 modifiers = keyboard.modifierMask(KeyCodes::modifiersOf(combo_.flags));
    QList<Grab> wanted;
    for (const KeyCombo &place : LayoutKeys::places(combo_, KeyboardLayout::first())) {
        const quint32 key = KeyCodes::withCode(place.code)->scanCode + KeyCodes::scanCodeOffset;
        for (const quint16 locks : keyboard.lockMasks())
            wanted.append({xcb_keycode_t(key), quint16(modifiers | locks)});
    }
    // What is to stay is never let go: a key may be pressed at this moment.
    const QList<Grab> before = std::exchange(grabs_, {});
    QString reason;
    for (const Grab &grab : wanted) {
        if (reason.isEmpty() && !before.contains(grab))
            reason = grabOnServer(grab);
        if (reason.isEmpty())
            grabs_.append(grab);
    }
    for (const Grab &grab : before) {
        if (!grabs_.contains(grab))
            ungrabOnServer(grab);
    }
    if (!reason.isEmpty())
        release();
    xcb_flush(XConnection::get());
    return reason;
}

void X11HotKey::release()
{
    for (const Grab &grab : std::exchange(grabs_, {}))
        ungrabOnServer(grab);
    xcb_flush(XConnection::get());
}

bool X11HotKey::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != XConnection::eventType)
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if (event->response_type != XCB_KEY_PRESS)
        return false;
    const auto *press = reinterpret_cast<const xcb_key_press_event_t *>(event);
    // The masks of the modifiers; above them the state tells of layout and buttons.
    constexpr quint16 modifierMasks = 0xff;
    const bool isOurs =
        press->event == XConnection::rootWindow() &&
        std::any_of(grabs_.cbegin(), grabs_.cend(), [press](const Grab &grab) {
            return grab.key == press->detail && grab.modifiers == (press->state & modifierMasks);
        });
    if (isOurs)
        QMetaObject::invokeMethod(
            &context_, [this] { handlers_.pressed({}); }, Qt::QueuedConnection);
    return isOurs;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/X11HotKey.h"

#include "Helper/Running/X11Keyboard.h"
#include "Helper/Running/XConnection.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcX11, "quenby.helper.hotkey.x11")

const QByteArray keyboardExtension = QByteArrayLiteral("XKEYBOARD");
/// Of the keyboard extension's events those that tell of another keyboard, or of another layout.
constexpr quint8 newKeyboardNotify = 0;
constexpr quint8 mapNotify = 1;

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
    xcb_connection_t *connection = XConnection::get();
    const Freed<xcb_query_extension_reply_t> extension(
        xcb_query_extension_reply(
            connection,
            xcb_query_extension(connection, quint16(keyboardExtension.size()), keyboardExtension.constData()),
            nullptr),
        &std::free);
    if (extension && extension->present)
        keyboardEvent_ = extension->first_event;
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

void X11HotKey::grab(QKeyCombination keys)
{
    keys_ = keys;
    if (const QString reason = grabNow(); !reason.isEmpty())
        handlers_.refused(reason);
    else
        handlers_.granted();
}

QString X11HotKey::grabNow()
{
    const X11Keyboard keyboard;
    const QList<xcb_keycode_t> codes = keyboard.keyCodes(keys_);
    const quint16 modifiers = keyboard.modifierMask(keys_.keyboardModifiers());
    QList<Grab> wanted;
    for (const xcb_keycode_t code : codes) {
        for (const quint16 locks : keyboard.lockMasks())
            wanted.append({code, quint16(modifiers | locks)});
    }
    // What is to stay is never let go: a key may be pressed at this moment.
    const QList<Grab> before = std::exchange(grabs_, {});
    QString reason = codes.isEmpty() ? QStringLiteral("no key of the keyboard gives it") : QString();
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
    if (isChangeOfLayout(event) && !std::exchange(isRegrabbing_, true))
        QMetaObject::invokeMethod(
            &context_, [this] { layoutChanged(); }, Qt::QueuedConnection);
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
            &context_, [this] { handlers_.pressed(); }, Qt::QueuedConnection);
    return isOurs;
}

bool X11HotKey::isChangeOfLayout(const xcb_generic_event_t *event) const
{
    if (event->response_type == XCB_MAPPING_NOTIFY)
        return true;
    // The kind of a keyboard event stands where others have a detail.
    return keyboardEvent_ != 0 && event->response_type == keyboardEvent_ &&
           (event->pad0 == newKeyboardNotify || event->pad0 == mapNotify);
}

void X11HotKey::layoutChanged()
{
    isRegrabbing_ = false;
    if (const QString reason = grabNow(); !reason.isEmpty()) {
        // It may come back with the next layout.
        qCWarning(lcX11) << "not heard with this layout of the keyboard:" << reason;
    }
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/X11KeyboardWatch.h"

#include "Helper/Running/XConnection.h"

#include <QCoreApplication>

#include <cstdlib>
#include <memory>
#include <utility>

namespace {

const QByteArray keyboardExtension = QByteArrayLiteral("XKEYBOARD");
/// Of the keyboard extension's events those that tell of another keyboard, or of another layout.
constexpr quint8 newKeyboardNotify = 0;
constexpr quint8 mapNotify = 1;

} // namespace

X11KeyboardWatch::X11KeyboardWatch(std::function<void()> changed)
    : changed_(std::move(changed))
{
    xcb_connection_t *connection = XConnection::get();
    if (!connection)
        return;
    const std::unique_ptr<xcb_query_extension_reply_t, decltype(&std::free)> extension(
        xcb_query_extension_reply(
            connection,
            xcb_query_extension(connection, quint16(keyboardExtension.size()), keyboardExtension.constData()),
            nullptr),
        &std::free);
    if (extension && extension->present)
        keyboardEvent_ = extension->first_event;
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11KeyboardWatch::~X11KeyboardWatch()
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11KeyboardWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != XConnection::eventType)
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    // The kind of a keyboard event stands where others have a detail.
    const bool isOfKeyboard = keyboardEvent_ != 0 && event->response_type == keyboardEvent_ &&
                              (event->pad0 == newKeyboardNotify || event->pad0 == mapNotify);
    if ((isOfKeyboard || event->response_type == XCB_MAPPING_NOTIFY) && !std::exchange(isTelling_, true)) {
        QMetaObject::invokeMethod(
            &context_,
            [this] {
                isTelling_ = false;
                changed_();
            },
            Qt::QueuedConnection);
    }
    return false;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DirectSave.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

Q_LOGGING_CATEGORY(logDirectSave, "quenby.toolkit.directsave")

namespace {

struct Freed
{
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, Freed>;

/// A file URL is at most three bytes for each byte of the longest path.
constexpr std::uint32_t longestValueInWords = 3 * 4096 / 4;
constexpr std::uint8_t bitsOfAByte = 8;

xcb_connection_t *connection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(const QByteArray &name)
{
    const auto cookie = xcb_intern_atom(connection(), false, std::uint16_t(name.size()), name.constData());
    const ReplyPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace

bool DirectSave::isAvailable()
{
    return connection() != nullptr;
}

void DirectSave::announce(const QString &name)
{
    const auto cookie = xcb_get_selection_owner(connection(), atom("XdndSelection"));
    const ReplyPtr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection(), cookie, nullptr));
    if (!owner || owner->owner == XCB_WINDOW_NONE) {
        qCWarning(logDirectSave) << "no window owns the drag";
        return;
    }
    window_ = owner->owner;
    const QByteArray bytes = name.toUtf8();
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window_, atom(format.toLatin1()),
                        atom("text/plain"), bitsOfAByte, std::uint32_t(bytes.size()), bytes.constData());
    xcb_flush(connection());
}

QUrl DirectSave::wantedUrl() const
{
    if (window_ == XCB_WINDOW_NONE)
        return {};
    const auto cookie = xcb_get_property(connection(), false, window_, atom(format.toLatin1()),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, longestValueInWords);
    const ReplyPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection(), cookie, nullptr));
    if (!reply || reply->format != bitsOfAByte || reply->bytes_after != 0)
        return {};
    const QByteArray value(static_cast<const char *>(xcb_get_property_value(reply.get())),
                           xcb_get_property_value_length(reply.get()));
    const QUrl url = QUrl::fromEncoded(value, QUrl::StrictMode);
    // Left alone, the property still holds a name.
    return url.isRelative() ? QUrl() : url;
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/Running/ScreenTray.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

namespace {

constexpr quint8 sentMask = 0x80;
constexpr quint32 requestDock = 0;
constexpr auto selectionName = "_NET_SYSTEM_TRAY_S0";

} // namespace

ScreenTray::ScreenTray(const QString &display)
    : connection_(xcb_connect(display.toLatin1().constData(), nullptr))
{
    EXPECT_EQ(xcb_connection_has_error(connection_), 0);
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    window_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    opcodeAtom_ = atom("_NET_SYSTEM_TRAY_OPCODE");
    xcb_set_selection_owner(connection_, window_, atom(selectionName), XCB_CURRENT_TIME);
    announce();
}

ScreenTray::~ScreenTray()
{
    xcb_disconnect(connection_);
}

void ScreenTray::announce()
{
    xcb_client_message_event_t announcement = {};
    announcement.response_type = XCB_CLIENT_MESSAGE;
    announcement.format = 32;
    announcement.window = root_;
    announcement.type = atom("MANAGER");
    announcement.data.data32[1] = atom(selectionName);
    announcement.data.data32[2] = window_;
    xcb_send_event(connection_, false, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&announcement));
    xcb_flush(connection_);
}

xcb_atom_t ScreenTray::atom(const QByteArray &name) const
{
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection_,
                              xcb_intern_atom(connection_, false, quint16(name.size()), name.constData()),
                              nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

bool ScreenTray::hasIcon()
{
    for (;;) {
        const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
            xcb_poll_for_event(connection_), &std::free);
        if (!event)
            return hasIcon_;
        const auto *message = reinterpret_cast<const xcb_client_message_event_t *>(event.get());
        if ((event->response_type & ~sentMask) == XCB_CLIENT_MESSAGE && message->type == opcodeAtom_ &&
            message->data.data32[1] == requestDock)
            hasIcon_ = true;
    }
}

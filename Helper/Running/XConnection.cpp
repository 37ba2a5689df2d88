// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/XConnection.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>

xcb_connection_t *XConnection::get()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

int XConnection::screenNumber()
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) == 0)
        return 0;
    std::free(host);
    return screen;
}

xcb_window_t XConnection::rootWindow()
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(get()));
    for (int number = screenNumber(); number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    return screens.data->root;
}

xcb_atom_t XConnection::atom(const QByteArray &name)
{
    const xcb_intern_atom_cookie_t cookie =
        xcb_intern_atom(get(), false, quint16(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(get(), cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

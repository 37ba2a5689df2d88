// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The conventions are those of the Extended Window Manager Hints, version 1.5.

#include "Toolkit/WindowManager.h"

#include <QByteArray>
#include <QString>
#include <QSysInfo>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

struct Freed
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, Freed>;

struct Disconnected
{
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

constexpr std::uint8_t bitsOfAByte = 8;
constexpr std::uint8_t bitsOfANumber = 32;
/// More windows than a screen has, and longer than the name of a machine.
constexpr std::uint32_t longestValueInWords = 1 << 16;
/// "Asked for by the user": a manager may refuse what a program wants by itself.
constexpr std::uint32_t sourceIsPager = 2;

const QByteArray activeWindow = QByteArrayLiteral("_NET_ACTIVE_WINDOW");
const QByteArray clientList = QByteArrayLiteral("_NET_CLIENT_LIST");
const QByteArray clientListStacking = QByteArrayLiteral("_NET_CLIENT_LIST_STACKING");
const QByteArray supported = QByteArrayLiteral("_NET_SUPPORTED");
const QByteArray supportingCheck = QByteArrayLiteral("_NET_SUPPORTING_WM_CHECK");
const QByteArray processOfWindow = QByteArrayLiteral("_NET_WM_PID");

/// A connection of its own, so that whatever shows the windows of this process is not disturbed.
class Screen
{
public:
    Screen()
    {
        int number = 0;
        connection_.reset(xcb_connect(nullptr, &number));
        if (xcb_connection_has_error(connection_.get()) != 0)
            return;
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
        for (; screens.rem > 1 && number > 0; --number)
            xcb_screen_next(&screens);
        if (screens.rem > 0)
            root_ = screens.data->root;
    }

    /// Whether a manager runs now that knows \a hint. What one leaves behind that is gone does not count: the
    /// window that it named as a sign of life is gone with it.
    bool isManagedWith(const QByteArray &hint) const
    {
        const xcb_window_t sign = firstOf(numbers(root_, supportingCheck, XCB_ATOM_WINDOW));
        const std::vector<std::uint32_t> hints = numbers(root_, supported, XCB_ATOM_ATOM);
        return sign != XCB_WINDOW_NONE && firstOf(numbers(sign, supportingCheck, XCB_ATOM_WINDOW)) == sign &&
               std::find(hints.begin(), hints.end(), atom(hint)) != hints.end();
    }

    xcb_window_t active() const { return firstOf(numbers(root_, activeWindow, XCB_ATOM_WINDOW)); }

    /// From the bottom to the top if the manager tells, else from the oldest to the newest.
    std::vector<xcb_window_t> windows() const
    {
        const std::vector<xcb_window_t> stacked = numbers(root_, clientListStacking, XCB_ATOM_WINDOW);
        return stacked.empty() ? numbers(root_, clientList, XCB_ATOM_WINDOW) : stacked;
    }

    /// 0 if it does not say, or is of another machine, where ids are others'.
    pid_t processOf(xcb_window_t window) const
    {
        const auto reply = property(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_GET_PROPERTY_TYPE_ANY);
        if (!reply || reply->format != bitsOfAByte)
            return 0;
        const QByteArray machine(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                 xcb_get_property_value_length(reply.get()));
        if (machine.isEmpty() || QString::fromLocal8Bit(machine) != QSysInfo::machineHostName())
            return 0;
        return pid_t(firstOf(numbers(window, processOfWindow, XCB_ATOM_CARDINAL)));
    }

    /// Whether the manager was asked to give \a window the focus.
    bool activate(xcb_window_t window) const
    {
        xcb_client_message_event_t message = {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = bitsOfANumber;
        message.window = window;
        message.type = atom(activeWindow);
        message.data.data32[0] = sourceIsPager;
        message.data.data32[1] = XCB_CURRENT_TIME;
        const auto cookie =
            xcb_send_event_checked(connection_.get(), false, root_,
                                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                                   reinterpret_cast<const char *>(&message));
        const ReplyPtr<xcb_generic_error_t> error(xcb_request_check(connection_.get(), cookie));
        return !error && xcb_connection_has_error(connection_.get()) == 0;
    }

private:
    static std::uint32_t firstOf(const std::vector<std::uint32_t> &values)
    {
        return values.empty() ? 0 : values.front();
    }

    xcb_atom_t atom(const QByteArray &name) const
    {
        // One that nobody has used yet says nothing here.
        const auto cookie =
            xcb_intern_atom(connection_.get(), true, std::uint16_t(name.size()), name.constData());
        const ReplyPtr<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_.get(), cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    /// Null if the window is gone or has none.
    ReplyPtr<xcb_get_property_reply_t> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const
    {
        if (window == XCB_WINDOW_NONE || name == XCB_ATOM_NONE)
            return nullptr;
        const auto cookie =
            xcb_get_property(connection_.get(), false, window, name, type, 0, longestValueInWords);
        return ReplyPtr<xcb_get_property_reply_t>(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    }

    std::vector<std::uint32_t> numbers(xcb_window_t window, const QByteArray &name, xcb_atom_t type) const
    {
        const auto reply = property(window, atom(name), type);
        if (!reply || reply->format != bitsOfANumber)
            return {};
        std::vector<std::uint32_t> values(xcb_get_property_value_length(reply.get()) / sizeof(std::uint32_t));
        std::copy_n(static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get())), values.size(),
                    values.begin());
        return values;
    }

    std::unique_ptr<xcb_connection_t, Disconnected> connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

} // namespace

std::optional<pid_t> WindowManager::activeProcess()
{
    const Screen screen;
    if (!screen.isManagedWith(activeWindow))
        return std::nullopt;
    const pid_t pid = screen.processOf(screen.active());
    return pid > 0 ? std::optional(pid) : std::nullopt;
}

bool WindowManager::activateProcess(pid_t pid, Windows windows)
{
    const Screen screen;
    if (pid <= 0 || !screen.isManagedWith(activeWindow))
        return false;
    std::vector<xcb_window_t> found = screen.windows();
    std::erase_if(found, [&](xcb_window_t window) { return screen.processOf(window) != pid; });
    if (windows == Windows::Front && found.size() > 1)
        found.erase(found.begin(), found.end() - 1);
    // The last is the topmost, and keeps the focus.
    return !found.empty() && std::all_of(found.begin(), found.end(),
                                         [&screen](xcb_window_t window) { return screen.activate(window); });
}

bool WindowManager::activateWindow(std::uint32_t window)
{
    const Screen screen;
    return screen.isManagedWith(::activeWindow) && screen.activate(window);
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Keyboard/FakeCompositor.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-server.h>

namespace {

void sendKeymap(wl_resource *keyboard, const QByteArray &keymap)
{
    const int file = ::memfd_create("keymap", MFD_CLOEXEC);
    const qsizetype size = keymap.size() + 1;
    EXPECT_EQ(::write(file, keymap.constData(), size_t(size)), size);
    wl_keyboard_send_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file, uint32_t(size));
    ::close(file);
}

const struct wl_keyboard_interface keyboardRequests
{
    .release = [](wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }
};

const struct wl_seat_interface seatRequests
{
    .get_pointer = [](wl_client *, wl_resource *, uint32_t) { ADD_FAILURE(); },
    .get_keyboard =
        [](wl_client *client, wl_resource *seat, uint32_t id) {
            wl_resource *keyboard =
                wl_resource_create(client, &wl_keyboard_interface, wl_resource_get_version(seat), id);
            wl_resource_set_implementation(keyboard, &keyboardRequests, nullptr, nullptr);
            sendKeymap(keyboard, static_cast<FakeCompositor *>(wl_resource_get_user_data(seat))->keymap());
        },
    .get_touch = [](wl_client *, wl_resource *, uint32_t) { ADD_FAILURE(); },
    .release = [](wl_client *, wl_resource *resource) { wl_resource_destroy(resource); },
};

void bindSeat(wl_client *client, void *compositor, uint32_t version, uint32_t id)
{
    wl_resource *seat = wl_resource_create(client, &wl_seat_interface, int(version), id);
    wl_resource_set_implementation(seat, &seatRequests, compositor, nullptr);
    const bool hasKeyboard = !static_cast<FakeCompositor *>(compositor)->keymap().isEmpty();
    wl_seat_send_capabilities(seat, hasKeyboard ? uint32_t(WL_SEAT_CAPABILITY_KEYBOARD) : 0U);
}

} // namespace

FakeCompositor::FakeCompositor(const QString &folder, const QByteArray &keymap)
    : socketPath_(folder + QStringLiteral("/wayland-test"))
    , keymap_(keymap)
    , display_(wl_display_create())
    , end_(::eventfd(0, EFD_CLOEXEC))
{
    wl_display_add_socket(display_, QFile::encodeName(socketPath_).constData());
    wl_global_create(display_, &wl_seat_interface, 1, this, &bindSeat);
    whenToEnd_ = wl_event_loop_add_fd(
        wl_display_get_event_loop(display_), end_, WL_EVENT_READABLE,
        [](int, uint32_t, void *display) {
            wl_display_terminate(static_cast<wl_display *>(display));
            return 0;
        },
        display_);
    thread_ = std::thread([this] { wl_display_run(display_); });
}

FakeCompositor::~FakeCompositor()
{
    const uint64_t one = 1;
    EXPECT_EQ(::write(end_, &one, sizeof one), qsizetype(sizeof one));
    thread_.join();
    wl_event_source_remove(whenToEnd_);
    wl_display_destroy_clients(display_);
    wl_display_destroy(display_);
    ::close(end_);
}

// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Keyboard/WaylandKeymap.h"

#include <QFile>

#include <cstring>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace {

/// Every version has what is asked for here.
constexpr quint32 firstVersion = 1;

/// What is told on one connection.
struct Answers
{
    wl_seat *seat = nullptr;
    wl_keyboard *keyboard = nullptr;
    QByteArray keymap;
};

Answers &answersAt(void *data)
{
    return *static_cast<Answers *>(data);
}

const wl_keyboard_listener keyboardListener{
    .keymap =
        [](void *data, wl_keyboard *, uint32_t format, int32_t descriptor, uint32_t size) {
            if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
                void *bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
                if (bytes != MAP_FAILED) {
                    // It ends with a zero.
                    const char *text = static_cast<const char *>(bytes);
                    answersAt(data).keymap = QByteArray(text, qsizetype(::strnlen(text, size)));
                    ::munmap(bytes, size);
                }
            }
            ::close(descriptor);
        },
    // What follows is only for who has the keyboard.
    .enter = [](void *, wl_keyboard *, uint32_t, wl_surface *, wl_array *) {},
    .leave = [](void *, wl_keyboard *, uint32_t, wl_surface *) {},
    .key = [](void *, wl_keyboard *, uint32_t, uint32_t, uint32_t, uint32_t) {},
    .modifiers = [](void *, wl_keyboard *, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t) {},
    .repeat_info = [](void *, wl_keyboard *, int32_t, int32_t) {},
};

const wl_seat_listener seatListener{
    .capabilities =
        [](void *data, wl_seat *seat, uint32_t capabilities) {
            Answers &answers = answersAt(data);
            if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0 || answers.keyboard)
                return;
            answers.keyboard = wl_seat_get_keyboard(seat);
            wl_keyboard_add_listener(answers.keyboard, &keyboardListener, data);
        },
    .name = [](void *, wl_seat *, const char *) {},
};

const wl_registry_listener registryListener{
    .global =
        [](void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t) {
            Answers &answers = answersAt(data);
            if (answers.seat || std::strcmp(interface, wl_seat_interface.name) != 0)
                return;
            answers.seat =
                static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, firstVersion));
            wl_seat_add_listener(answers.seat, &seatListener, data);
        },
    .global_remove = [](void *, wl_registry *, uint32_t) {},
};

template <typename Object>
using Owned = std::unique_ptr<Object, void (*)(Object *)>;

} // namespace

QByteArray WaylandKeymap::text(const QString &name)
{
    const Owned<wl_display> display(
        wl_display_connect(name.isEmpty() ? nullptr : QFile::encodeName(name).constData()),
        &wl_display_disconnect);
    if (!display)
        return {};
    Answers answers;
    const Owned<wl_registry> registry(wl_display_get_registry(display.get()), &wl_registry_destroy);
    wl_registry_add_listener(registry.get(), &registryListener, &answers);
    // The answers are the seats, then what they have, then the keymap.
    for (int question = 0; question < 3; ++question) {
        if (wl_display_roundtrip(display.get()) < 0)
            break;
    }
    const Owned<wl_seat> seat(answers.seat, &wl_seat_destroy);
    const Owned<wl_keyboard> keyboard(answers.keyboard, &wl_keyboard_destroy);
    return answers.keymap;
}

// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/WaylandKeyboard.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Keys/WaylandConnection.h"

#include <QByteArray>

#include <sys/mman.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace platform {
namespace {

// What the compositor says of a keyboard when it is created.
struct KeyboardState {
    QByteArray keymap;
    quint32 group = 0;
    quint32 modifiers = 0;
};

void onKeymap(void *data, wl_keyboard *, quint32 format, int file, quint32 size)
{
    const Descriptor descriptor(file);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        return;
    }
    auto *memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (memory != MAP_FAILED) { // NOLINT(*-cstyle-cast, performance-no-int-to-ptr)
        const auto *text = static_cast<const char *>(memory);
        static_cast<KeyboardState *>(data)->keymap =
            QByteArray(text, static_cast<int>(::strnlen(text, size)));
        ::munmap(memory, size);
    }
}

void onEnter(void *, wl_keyboard *, quint32, wl_surface *, wl_array *) {}

void onLeave(void *, wl_keyboard *, quint32, wl_surface *) {}

void onKey(void *, wl_keyboard *, quint32, quint32, quint32, quint32) {}

void onModifiers(void *data, wl_keyboard *, quint32, quint32 held, quint32 latched, quint32 locked,
                 quint32 group)
{
    auto *state = static_cast<KeyboardState *>(data);
    state->group = group;
    state->modifiers = held | latched | locked;
}

void onRepeatInfo(void *, wl_keyboard *, qint32, qint32) {}

constexpr wl_keyboard_listener listener{onKeymap, onEnter,     onLeave,
                                        onKey,    onModifiers, onRepeatInfo};

// Compiling a keymap takes milliseconds; it seldom changes.
std::shared_ptr<xkb_keymap> compiled(const QByteArray &text)
{
    static QByteArray lastText;
    static std::shared_ptr<xkb_keymap> lastKeymap;
    if (lastKeymap == nullptr || text != lastText) {
        lastKeymap = makeKeymap([&text](xkb_context *context) {
            return ::xkb_keymap_new_from_string(
                context, text.constData(), XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
        });
        lastText = text;
    }
    return lastKeymap;
}

} // namespace

std::optional<KeyboardLayout> waylandKeyboardLayout()
{
    // A keyboard object for this one question: a lasting one would collect the events of every key.
    WaylandConnection connection;
    auto *seat = connection.seat();
    if (seat == nullptr || !connection.seatHasKeyboard()) {
        return std::nullopt;
    }
    KeyboardState state;
    auto *keyboard = ::wl_seat_get_keyboard(seat);
    ::wl_keyboard_add_listener(keyboard, &listener, &state);
    connection.roundTrip();
    ::wl_keyboard_release(keyboard);
    const auto keymap = compiled(state.keymap);
    return keymap == nullptr ? std::nullopt
                             : std::optional(KeyboardLayout(keymap, state.group, state.modifiers));
}

} // namespace platform

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

// What a keyboard tells at its creation.
struct Told {
    QByteArray keymap;
    quint32 group = 0;
};

void keymapTold(void *data, wl_keyboard *, quint32 format, int file, quint32 size)
{
    const Descriptor descriptor(file);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        return;
    }
    auto *memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (memory != MAP_FAILED) { // NOLINT(*-cstyle-cast, performance-no-int-to-ptr)
        const auto *text = static_cast<const char *>(memory);
        static_cast<Told *>(data)->keymap =
            QByteArray(text, static_cast<int>(::strnlen(text, size)));
        ::munmap(memory, size);
    }
}

void entered(void *, wl_keyboard *, quint32, wl_surface *, wl_array *) {}

void left(void *, wl_keyboard *, quint32, wl_surface *) {}

void keyTold(void *, wl_keyboard *, quint32, quint32, quint32, quint32) {}

void modifiersTold(void *data, wl_keyboard *, quint32, quint32, quint32, quint32, quint32 group)
{
    static_cast<Told *>(data)->group = group;
}

void repeatTold(void *, wl_keyboard *, qint32, qint32) {}

constexpr wl_keyboard_listener listener{keymapTold, entered,       left,
                                        keyTold,    modifiersTold, repeatTold};

// Compiling a keymap takes milliseconds; it seldom changes.
std::shared_ptr<xkb_keymap> compiled(const QByteArray &text)
{
    static const std::shared_ptr<xkb_context> context(::xkb_context_new(XKB_CONTEXT_NO_FLAGS),
                                                      ::xkb_context_unref);
    static QByteArray lastText;
    static std::shared_ptr<xkb_keymap> lastKeymap;
    if (lastKeymap == nullptr || text != lastText) {
        auto *keymap = context == nullptr
                           ? nullptr
                           : ::xkb_keymap_new_from_string(context.get(), text.constData(),
                                                          XKB_KEYMAP_FORMAT_TEXT_V1,
                                                          XKB_KEYMAP_COMPILE_NO_FLAGS);
        lastKeymap =
            keymap == nullptr ? nullptr : std::shared_ptr<xkb_keymap>(keymap, ::xkb_keymap_unref);
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
    Told told;
    auto *keyboard = ::wl_seat_get_keyboard(seat);
    ::wl_keyboard_add_listener(keyboard, &listener, &told);
    connection.roundTrip();
    ::wl_keyboard_release(keyboard);
    const auto keymap = compiled(told.keymap);
    return keymap == nullptr ? std::nullopt : std::optional(KeyboardLayout(keymap, told.group));
}

} // namespace platform

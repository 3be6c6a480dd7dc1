// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/VirtualKeyboard.h"

#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard-unstable-v1-client-protocol.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <cstring>

namespace test {

struct VirtualKeyboard::Private {
    wl_display *display = ::wl_display_connect(nullptr);
    wl_registry *registry = nullptr;
    wl_seat *seat = nullptr;
    zwp_virtual_keyboard_manager_v1 *manager = nullptr;
    zwp_virtual_keyboard_v1 *keyboard = nullptr;
    xkb_context *context = ::xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_keymap *keymap = nullptr;
    xkb_state *state = nullptr;
    quint32 time = 0;

    void send(quint32 key, quint32 pressed);
    void sendModifiers() const;
};

namespace {

void told(void *data, wl_registry *registry, quint32 name, const char *interface, quint32)
{
    auto &keyboard = *static_cast<std::pair<wl_seat *, zwp_virtual_keyboard_manager_v1 *> *>(data);
    if (std::strcmp(interface, wl_seat_interface.name) == 0) {
        keyboard.first =
            static_cast<wl_seat *>(::wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (std::strcmp(interface, zwp_virtual_keyboard_manager_v1_interface.name) == 0) {
        keyboard.second = static_cast<zwp_virtual_keyboard_manager_v1 *>(
            ::wl_registry_bind(registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
    }
}

void gone(void *, wl_registry *, quint32) {}

constexpr wl_registry_listener listener{told, gone};

} // namespace

VirtualKeyboard::VirtualKeyboard(const QByteArray &layouts) : d(std::make_unique<Private>())
{
    if (d->display == nullptr) {
        return;
    }
    std::pair<wl_seat *, zwp_virtual_keyboard_manager_v1 *> globals{};
    d->registry = ::wl_display_get_registry(d->display);
    ::wl_registry_add_listener(d->registry, &listener, &globals);
    ::wl_display_roundtrip(d->display);
    d->seat = globals.first;
    d->manager = globals.second;
    xkb_rule_names names{};
    names.layout = layouts.constData();
    d->keymap = ::xkb_keymap_new_from_names(d->context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (d->seat == nullptr || d->manager == nullptr || d->keymap == nullptr) {
        return;
    }
    d->state = ::xkb_state_new(d->keymap);
    d->keyboard = ::zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(d->manager, d->seat);
    auto *text = ::xkb_keymap_get_as_string(d->keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const auto size = std::strlen(text) + 1;
    const int file = ::memfd_create("keymap", MFD_CLOEXEC);
    const bool written = ::write(file, text, size) == static_cast<ssize_t>(size);
    std::free(text);
    if (written) {
        ::zwp_virtual_keyboard_v1_keymap(d->keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                         static_cast<quint32>(size));
        ::wl_display_roundtrip(d->display);
    }
    ::close(file);
}

VirtualKeyboard::~VirtualKeyboard()
{
    if (d->keyboard != nullptr) {
        ::zwp_virtual_keyboard_v1_destroy(d->keyboard);
    }
    if (d->manager != nullptr) {
        ::wl_proxy_destroy(reinterpret_cast<wl_proxy *>(d->manager));
    }
    if (d->seat != nullptr) {
        ::wl_seat_destroy(d->seat);
    }
    if (d->registry != nullptr) {
        ::wl_registry_destroy(d->registry);
    }
    if (d->display != nullptr) {
        ::wl_display_roundtrip(d->display);
        ::wl_display_disconnect(d->display);
    }
    ::xkb_state_unref(d->state);
    ::xkb_keymap_unref(d->keymap);
    ::xkb_context_unref(d->context);
}

bool VirtualKeyboard::works() const
{
    return d->keyboard != nullptr && ::wl_display_get_error(d->display) == 0;
}

void VirtualKeyboard::Private::send(quint32 key, quint32 pressed)
{
    ::zwp_virtual_keyboard_v1_key(keyboard, ++time, key, pressed);
    ::xkb_state_update_key(state, key + 8, pressed != 0 ? XKB_KEY_DOWN : XKB_KEY_UP);
    sendModifiers();
}

// The compositor leaves it to such keyboards to tell what their modifiers do.
void VirtualKeyboard::Private::sendModifiers() const
{
    ::zwp_virtual_keyboard_v1_modifiers(
        keyboard, ::xkb_state_serialize_mods(state, XKB_STATE_MODS_DEPRESSED),
        ::xkb_state_serialize_mods(state, XKB_STATE_MODS_LATCHED),
        ::xkb_state_serialize_mods(state, XKB_STATE_MODS_LOCKED),
        ::xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE));
    ::wl_display_roundtrip(display);
}

void VirtualKeyboard::press(quint32 key)
{
    d->send(key, 1);
}

void VirtualKeyboard::release(quint32 key)
{
    d->send(key, 0);
}

void VirtualKeyboard::click(quint32 key)
{
    press(key);
    release(key);
}

void VirtualKeyboard::switchGroup(quint32 group)
{
    ::xkb_state_update_mask(d->state, 0, 0, 0, 0, 0, group);
    d->sendModifiers();
}

} // namespace test

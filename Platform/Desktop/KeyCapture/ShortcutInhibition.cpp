// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"

#include "Platform/Desktop/KeyCapture/KeyboardGrab.h"
#include "Platform/Desktop/KeyCapture/WaylandShortcutInhibitor.h"

#include <QGuiApplication>
#include <QWidget>

namespace platform {
namespace {

QWindow *windowOf(const QWidget *widget)
{
    if (widget == nullptr) {
        return nullptr;
    }
    widget->window()->winId(); // makes the handle
    return widget->window()->windowHandle();
}

std::unique_ptr<ShortcutInhibition::Method> methodFor(QWindow *window)
{
    const auto name = QGuiApplication::platformName();
    if (window == nullptr) {
        return nullptr;
    }
    if (name == QLatin1String("xcb")) {
        return std::make_unique<KeyboardGrab>(window);
    }
    if (name.startsWith(QLatin1String("wayland"))) {
        return std::make_unique<WaylandShortcutInhibitor>(window);
    }
    return nullptr;
}

} // namespace

ShortcutInhibition::ShortcutInhibition(QWindow *window) : m_method(methodFor(window)) {}

ShortcutInhibition::ShortcutInhibition(const QWidget *widget) : ShortcutInhibition(windowOf(widget))
{
}

ShortcutInhibition::~ShortcutInhibition() = default;

bool ShortcutInhibition::isActive() const
{
    return m_method != nullptr && m_method->isActive();
}

} // namespace platform

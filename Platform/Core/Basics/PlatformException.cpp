// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"

#include <cxxabi.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>
#include <typeinfo>

namespace platform {
namespace {

std::atomic<void (*)(const Exception &)> currentHandler = nullptr;
std::terminate_handler systemHandler = nullptr;

QString className(const std::type_info &type)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void *)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    return QString::fromUtf8(name ? name.get() : type.name());
}

void report(const std::exception_ptr &exception, void (*handler)(const Exception &))
{
    try {
        std::rethrow_exception(exception);
    } catch (const Exception &known) {
        handler(known);
    } catch (const std::exception &standard) {
        handler(Exception(className(typeid(standard)), QString::fromUtf8(standard.what())));
    } catch (...) {
        handler(Exception(QStringLiteral("Unknown"), QStringLiteral("Unknown exception")));
    }
}

[[noreturn]] void terminated()
{
    static std::atomic_flag reporting = ATOMIC_FLAG_INIT;
    if (reporting.test_and_set()) {
        // Another thread is reporting. If it waits for this one, it waits in vain.
        std::this_thread::sleep_for(std::chrono::seconds(2));
    } else if (auto *handler = currentHandler.load()) {
        // None where the process ends for another reason, such as a thread that was not joined.
        if (const auto exception = std::current_exception()) {
            report(exception, handler);
        }
    }
    systemHandler();
    std::abort();
}

} // namespace

void setUncaughtExceptionHandler(void (*handler)(const Exception &))
{
    static const bool installed = [] {
        systemHandler = std::set_terminate(terminated);
        return true;
    }();
    static_cast<void>(installed);
    currentHandler = handler;
}

} // namespace platform

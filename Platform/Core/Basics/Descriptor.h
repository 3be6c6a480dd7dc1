// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

// A file descriptor that closes when it goes.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor &&other) noexcept : m_number(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        if (this != &other) {
            close();
            m_number = other.release();
        }
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    // Negative where there is none.
    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    int release() { return std::exchange(m_number, -1); }

    void close()
    {
        if (m_number >= 0) {
            ::close(std::exchange(m_number, -1));
        }
    }

private:
    int m_number = -1;
};

} // namespace platform

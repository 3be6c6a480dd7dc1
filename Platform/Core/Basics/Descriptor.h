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
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor &&other) noexcept : m_fd(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        if (this != &other) {
            close();
            m_fd = other.release();
        }
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    // Negative where there is none.
    int fd() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    int release() { return std::exchange(m_fd, -1); }

    void close()
    {
        if (m_fd >= 0) {
            ::close(std::exchange(m_fd, -1));
        }
    }

private:
    int m_fd = -1;
};

} // namespace platform

// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/PipeReader.h"

#include "Platform/Core/Basics/PlatformException.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>

namespace platform {
namespace {

constexpr int maxPiece = 1 << 16;

Exception systemFailure(int error)
{
    return {QStringLiteral("NSFileHandleOperationException"), qt_error_string(error)};
}

} // namespace

PipeReader::PipeReader(Descriptor pipe)
    : m_pipe(std::move(pipe)), m_closing(::eventfd(0, EFD_CLOEXEC))
{
    if (!m_closing.isOpen()) {
        throw systemFailure(errno);
    }
}

void PipeReader::waitForData() const
{
    std::array<pollfd, 2> files{pollfd{m_pipe.fd(), POLLIN, 0}, pollfd{m_closing.fd(), POLLIN, 0}};
    while (::poll(files.data(), files.size(), -1) < 0 && errno == EINTR) {
    }
}

QByteArray PipeReader::readAvailable()
{
    std::unique_lock lock(m_mutex);
    if (!m_isClosed) {
        m_isWaiting = true;
        lock.unlock();
        waitForData();
        lock.lock();
        m_isWaiting = false;
    }
    if (m_isClosed) {
        m_pipe.close();
        return {""};
    }
    QByteArray piece(maxPiece, Qt::Uninitialized);
    ssize_t size = 0;
    do {
        size = ::read(m_pipe.fd(), piece.data(), static_cast<std::size_t>(piece.size()));
    } while (size < 0 && errno == EINTR);
    if (size < 0) {
        throw systemFailure(errno);
    }
    piece.resize(static_cast<int>(size));
    return piece;
}

void PipeReader::close()
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    if (m_isWaiting) {
        ::eventfd_write(m_closing.fd(), 1); // the number may not be given to another file yet
    } else {
        m_pipe.close();
    }
}

} // namespace platform

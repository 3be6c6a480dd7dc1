// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Processes/ChildProcess.h"
#include "Platform/Core/Processes/SpawnProgram.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace platform {
namespace {

constexpr int pipeSize = 1 << 20;

Exception failure(const QString &reason)
{
    return {QStringLiteral("NSInvalidArgumentException"), reason};
}

Exception systemFailure(int error)
{
    return failure(qt_error_string(error));
}

// As the system takes it.
std::string systemText(const QString &text)
{
    const auto bytes = fileNameBytes(text);
    if (bytes.contains('\0')) {
        throw failure(QStringLiteral("A text holds a null character"));
    }
    return bytes.toStdString();
}

std::vector<std::string> environmentOf(const ChildProcess::Environment &variables)
{
    std::vector<std::string> entries;
    for (auto it = variables.begin(); it != variables.end(); ++it) {
        const auto name = systemText(it.key());
        if (name.empty() || name.find('=') != std::string::npos) {
            throw failure(QStringLiteral("Not the name of a variable: \"%1\"").arg(it.key()));
        }
        entries.push_back(name + '=' + systemText(it.value()));
    }
    return entries;
}

} // namespace

void ChildProcess::launch()
{
    const std::lock_guard lock(m_mutex);
    if (m_child != nullptr) {
        throw failure(QStringLiteral("task already launched"));
    }
    Program program;
    program.path = systemText(m_executable);
    program.arguments = {program.path};
    for (const auto &argument : m_arguments) {
        program.arguments.push_back(systemText(argument));
    }
    if (m_environment.has_value()) {
        program.environment = environmentOf(*m_environment);
    }
    std::array<Descriptor, 3> theirs;
    std::array<Descriptor, 3> ours;
    for (std::size_t stream = 0; stream < m_streams.size(); ++stream) {
        if (m_streams.at(stream) == Stream::Inherited) {
            program.streams.at(stream) = inheritedStream;
        } else if (m_streams.at(stream) == Stream::Pipe) {
            auto pipe = openPipe();
            if (!pipe) {
                throw systemFailure(errno);
            }
            const bool isInput = stream == STDIN_FILENO;
            ours.at(stream) = copyAboveStandardStreams((isInput ? pipe->second : pipe->first).fd());
            if (!ours.at(stream).isOpen()) {
                throw systemFailure(errno);
            }
            theirs.at(stream) = std::move(isInput ? pipe->first : pipe->second);
            // Only makes it faster; a user may not have many large pipes.
            ::fcntl(ours.at(stream).fd(), F_SETPIPE_SZ, pipeSize); // NOLINT(*-vararg)
            program.streams.at(stream) = theirs.at(stream).fd();
        } else if (m_streams.at(stream) == Stream::Memory) {
            theirs.at(stream) = Descriptor(::memfd_create("output", MFD_CLOEXEC));
            ours.at(stream) = copyAboveStandardStreams(theirs.at(stream).fd());
            if (!ours.at(stream).isOpen()) {
                throw systemFailure(errno);
            }
            program.streams.at(stream) = theirs.at(stream).fd();
        }
    }
    pid_t child = -1;
    if (const auto error = spawnProgram(std::move(program), &child); error != 0) {
        throw systemFailure(error);
    }
    m_child = std::make_shared<ChildExit>(child);
    m_ends = std::move(ours);
}

} // namespace platform

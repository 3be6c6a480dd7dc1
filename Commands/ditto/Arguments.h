// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

enum class Task { Compress, Extract, Help };

struct Arguments {
    Task task = Task::Help;
    bool keepParent = false;
    QString source;
    QString destination;
};

// What the command line asks for; nothing where it cannot be understood, with the reason in the
// second.
std::optional<Arguments> readArguments(int count, char **values, QString &reason);

extern const char *const usage;

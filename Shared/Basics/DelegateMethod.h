// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaMethod>

#include <initializer_list>

// A delegate's invokable method (Q_INVOKABLE or a slot) of that name with parameters of those types
// (QMetaType numbers); invalid when it has none.
QMetaMethod delegateMethod(const QObject &delegate, const QByteArray &name,
                           std::initializer_list<int> parameters);

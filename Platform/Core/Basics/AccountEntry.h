// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <cstddef>
#include <vector>

namespace platform {

// An entry (passwd or group) of the lists of users and groups. Plain C++. Any thread.
template <typename Entry>
class AccountEntry {
public:
    // The function is getpwuid_r() or one of its like.
    template <typename Key>
    AccountEntry(int (*function)(Key, Entry *, char *, std::size_t, Entry **), Key key)
    {
        while (function(key, &m_entry, m_texts.data(), m_texts.size(), &m_found) == ERANGE) {
            m_texts.resize(m_texts.size() * 2);
        }
    }
    AccountEntry(const AccountEntry &) = delete;
    AccountEntry &operator=(const AccountEntry &) = delete;

    bool exists() const { return m_found != nullptr; }
    const Entry *operator->() const { return m_found; }

private:
    Entry m_entry{};
    Entry *m_found = nullptr;
    std::vector<char> m_texts = std::vector<char>(1024);
};

template <typename Entry, typename Key>
AccountEntry(int (*)(Key, Entry *, char *, std::size_t, Entry **), Key) -> AccountEntry<Entry>;

} // namespace platform

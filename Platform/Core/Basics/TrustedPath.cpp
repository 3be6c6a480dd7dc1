// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/TrustedPath.h"

#include "Platform/Core/Basics/AccountEntry.h"
#include "Platform/Core/Text/LogText.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <optional>
#include <vector>

namespace platform {
namespace {

constexpr int maxLinks = 40; // as the system itself follows

// Whether another account than the user's has this primary group.
bool isPrimaryGroupOfAnother(gid_t group, uid_t user)
{
    static std::mutex mutex; // the list's position is the process's
    const std::lock_guard lock(mutex);
    bool isFound = false;
    ::setpwent();
    while (const passwd *entry = isFound ? nullptr : ::getpwent()) { // NOLINT(concurrency-*)
        isFound = entry->pw_gid == group && entry->pw_uid != user;
    }
    ::endpwent();
    return isFound;
}

bool isPrivateGroup(gid_t group, uid_t user)
{
    const AccountEntry account(::getpwuid_r, user);
    const AccountEntry list(::getgrgid_r, group);
    if (!account.exists() || account->pw_gid != group || !list.exists()) {
        return false;
    }
    const std::string name = account->pw_name;
    if (name != list->gr_name) {
        return false;
    }
    for (char **member = list->gr_mem; *member != nullptr; ++member) {
        if (name != *member) {
            return false;
        }
    }
    return !isPrimaryGroupOfAnother(group, user);
}

// Also true if that cannot be determined.
bool mayHaveAccessList(int file)
{
    const auto path = "/proc/self/fd/" + std::to_string(file); // O_PATH has no attributes itself
    return ::getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) >= 0 ||
           (errno != ENODATA && errno != EOPNOTSUPP);
}

// The account whose program serves this mounted file system, and can say what it likes of it;
// nothing where the kernel does.
std::optional<uid_t> userWhoServes(std::uint64_t mount)
{
    std::ifstream mounts("/proc/self/mountinfo");
    const auto beginning = std::to_string(mount) + ' ';
    for (std::string line; std::getline(mounts, line);) {
        if (line.compare(0, beginning.size(), beginning) == 0) {
            const std::string option = ",user_id=";
            const auto at = line.find(option, line.rfind(' '));
            return at == std::string::npos ? std::nullopt
                                           : std::optional(static_cast<uid_t>(std::strtoul(
                                                 line.c_str() + at + option.size(), nullptr, 10)));
        }
    }
    return {};
}

// Who else can change this; empty where nobody can.
std::string othersWhoChange(int file, const struct stat &status, uid_t user)
{
    if (status.st_uid != 0 && status.st_uid != user) {
        return "belongs to user " + std::to_string(status.st_uid);
    }
    if (S_ISLNK(status.st_mode)) {
        return {}; // its permissions say nothing; its folder has been judged
    }
    if ((status.st_mode & S_IWOTH) != 0) {
        return "can be changed by everybody";
    }
    if ((status.st_mode & S_IWGRP) == 0) {
        return {};
    }
    if (user == 0 || !isPrivateGroup(status.st_gid, user)) {
        return "can be changed by group " + std::to_string(status.st_gid);
    }
    return mayHaveAccessList(file) ? "has an access control list that lets others change it" : "";
}

class Walk {
public:
    explicit Walk(uid_t user) : m_user(user) {}

    TrustedFile to(std::string_view path)
    {
        if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) {
            refuse(path, ENOENT, "is not a full path");
            return std::move(m_result);
        }
        expect(path);
        if (enterRoot()) {
            while (!m_names.empty()) {
                const auto name = std::move(m_names.back());
                m_names.pop_back();
                if (!step(name)) {
                    return std::move(m_result);
                }
            }
            finish();
        }
        return std::move(m_result);
    }

private:
    // Puts the names of this path before those that are still to be walked.
    void expect(std::string_view path)
    {
        std::vector<std::string> names;
        for (std::size_t begin = 0; begin <= path.size();) {
            const auto end = std::min(path.find('/', begin), path.size());
            const auto name = path.substr(begin, end - begin);
            // A path that ends with "/" leads to a folder, which the empty name asks for.
            if (name != "." && (!name.empty() || end == path.size())) {
                names.emplace_back(name);
            }
            begin = end + 1;
        }
        m_names.insert(m_names.end(), names.rbegin(), names.rend());
    }

    bool enterRoot()
    {
        m_path.clear();
        return take(Descriptor(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC)), "/");
    }

    bool step(const std::string &name)
    {
        if (!S_ISDIR(m_status.st_mode)) {
            return refuse(m_path, ENOTDIR, "is not a folder");
        }
        if (name.empty()) {
            return true;
        }
        // As a folder first: only then the system mounts what it mounts when it is needed (autofs).
        constexpr auto flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
        Descriptor next(::openat(m_here.fd(), name.c_str(), flags | O_DIRECTORY));
        if (!next.isOpen() && errno == ENOTDIR) {
            next = Descriptor(::openat(m_here.fd(), name.c_str(), flags));
        }
        const auto folder = m_path;
        if (name == "..") {
            m_path.resize(m_path.empty() ? 0 : m_path.rfind('/'));
            return take(std::move(next), m_path.empty() ? "/" : m_path);
        }
        m_path += '/' + name;
        Descriptor from = std::move(m_here);
        if (!take(std::move(next), m_path)) {
            return false;
        }
        if (!S_ISLNK(m_status.st_mode)) {
            return true;
        }
        return follow(std::move(from), folder);
    }

    bool follow(Descriptor from, const std::string &folder)
    {
        std::array<char, PATH_MAX> target{};
        const auto size = ::readlinkat(m_here.fd(), "", target.data(), target.size());
        if (size <= 0 || static_cast<std::size_t>(size) == target.size() || ++m_links > maxLinks) {
            return refuse(m_path, ELOOP, "is a link that cannot be followed");
        }
        const std::string_view text(target.data(), static_cast<std::size_t>(size));
        expect(text);
        if (text.front() == '/') {
            return enterRoot();
        }
        m_path = folder;
        return take(std::move(from), folder.empty() ? "/" : folder);
    }

    // Goes on from here, if nobody else can change it.
    bool take(Descriptor next, std::string_view path)
    {
        const int error = errno; // of a failed opening
        m_here = std::move(next);
        if (!m_here.isOpen()) {
            return refuseUnreachable(path, error);
        }
        if (!isServedByTrusted(path)) {
            return false;
        }
        if (::fstat(m_here.fd(), &m_status) != 0) {
            return refuseUnreachable(path, errno);
        }
        const auto objection = othersWhoChange(m_here.fd(), m_status, m_user);
        return objection.empty() || refuse(path, EPERM, objection);
    }

    // Looked at before the file system is asked for anything, since it may never answer.
    bool isServedByTrusted(std::string_view path)
    {
        struct statx place {};
        if (::statx(m_here.fd(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &place) !=
                0 ||
            place.stx_mnt_id == m_mount) {
            return true; // the same as its folder's
        }
        m_mount = place.stx_mnt_id;
        const auto server = userWhoServes(m_mount);
        return !server || *server == 0 || *server == m_user ||
               refuse(path, EPERM, "is served by a program of user " + std::to_string(*server));
    }

    void finish()
    {
        if (!S_ISREG(m_status.st_mode)) {
            refuse(m_path.empty() ? "/" : m_path, EACCES, "is not a regular file");
            return;
        }
        m_result.file = std::move(m_here);
        m_result.path = m_path;
    }

    bool refuseUnreachable(std::string_view path, int error)
    {
        return refuse(path, error, std::string("cannot be reached: ") + std::strerror(error));
    }

    bool refuse(std::string_view path, int error, std::string_view reason)
    {
        m_result.error = error;
        m_result.objection = logText(path) + ' ' + std::string(reason);
        return false;
    }

    const uid_t m_user;
    std::vector<std::string> m_names; // still to be walked, the next one last
    Descriptor m_here;
    struct stat m_status {};
    std::string m_path; // to here; empty for "/"
    int m_links = 0;
    std::uint64_t m_mount = 0; // that was looked at last
    TrustedFile m_result;
};

} // namespace

TrustedFile openTrusted(std::string_view path, uid_t user)
{
    return Walk(user).to(path);
}

} // namespace platform

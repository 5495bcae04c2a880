#pragma once

#include "UniqueFd.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace binder {

// The folder of names: for each a socket, and beside it a file that the living owner keeps locked. A name left by a
// dead process is not locked, and its socket is replaced in one step by the next owner's. Thread: any.
class NameFolder {
public:
    [[nodiscard]] static bool isName(const char* name);

    // The folder, created when missing; invalid, and logged, when it is not this user's alone.
    [[nodiscard]] static UniqueFd open();
    // The same, without creating it or logging that it is missing.
    [[nodiscard]] static UniqueFd openExisting();
    // Adds the folder to an inotify, for these of its events. False, with errno, when the system refuses.
    [[nodiscard]] static bool watch(const UniqueFd& folder, const UniqueFd& inotify, uint32_t events);
    // Makes this process the owner as long as the descriptor is open; invalid, with errno EAGAIN, while another is.
    [[nodiscard]] static UniqueFd lock(const UniqueFd& folder, std::string_view name);
    [[nodiscard]] static bool isLocked(std::string_view name);
    // Whether the folder still holds the file that was locked.
    [[nodiscard]] static bool isLockIn(const UniqueFd& folder, std::string_view name, const UniqueFd& lock);
    // Which file the name's socket is, 0 when there is none.
    [[nodiscard]] static ino_t socketIn(const UniqueFd& folder, std::string_view name);
    // A listening socket under the name. To be called by the owner.
    [[nodiscard]] static UniqueFd listen(const UniqueFd& folder, std::string_view name);
    // A connection to the name for hellos: connecting, writing and reading take HELLO_TIME at most. Invalid with errno
    // otherwise.
    [[nodiscard]] static UniqueFd connect(std::string_view name);
};

}  // namespace binder

#pragma once

#include "UniqueFd.h"

#include <sys/socket.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace binder {

using Bytes = std::basic_string_view<uint8_t>;

// System calls on a stream socket, with EINTR taken care of. `flags` is 0 to wait, or MSG_DONTWAIT. Thread: any.

// Bytes written, 0 when it would block, -1 with errno when the connection is lost.
[[nodiscard]] ssize_t sendSome(const UniqueFd& fd, Bytes bytes, int flags);
// The same, with descriptors that travel with the first byte.
[[nodiscard]] ssize_t sendWith(const UniqueFd& fd, Bytes bytes, const std::vector<int>& passed, int flags);
// Bytes read, 0 at the end of the connection, -1 with errno (EAGAIN when it would block).
[[nodiscard]] ssize_t receiveSome(const UniqueFd& fd, uint8_t* bytes, size_t size, int flags);
// The same; descriptors that came along are added to `passed`. A read ends behind the bytes that brought some.
[[nodiscard]] ssize_t receiveWith(const UniqueFd& fd, uint8_t* bytes, size_t size, std::vector<UniqueFd>& passed);

// Whether something has arrived that nobody has read.
[[nodiscard]] bool hasUnread(int fd);

// Two ends that are connected; invalid with errno when the system refuses.
[[nodiscard]] std::pair<UniqueFd, UniqueFd> socketPair();
// The process that made the other end; pid -1 when there is none.
[[nodiscard]] ucred peerOf(const UniqueFd& connection);
// Whether it is a stream socket that process `pid` made: nothing else that is passed could be read without surprises.
[[nodiscard]] bool isStreamOf(const UniqueFd& fd, pid_t pid);

}  // namespace binder

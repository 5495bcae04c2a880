#include "Socket.h"

#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace binder {
namespace {

constexpr size_t MAX_PASSED = 8;

iovec vectorOf(const uint8_t* bytes, size_t size) {
    return {const_cast<uint8_t*>(bytes), size};
}

ssize_t sentOf(ssize_t result) {
    return result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) ? 0 : result;
}

int optionOf(const UniqueFd& fd, int option) {
    int value = -1;
    socklen_t size = sizeof(value);
    return getsockopt(fd.get(), SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

void takeDescriptors(const msghdr& message, std::vector<UniqueFd>& passed) {
    for (const cmsghdr* each = CMSG_FIRSTHDR(&message); each != nullptr;
         each = CMSG_NXTHDR(const_cast<msghdr*>(&message), const_cast<cmsghdr*>(each))) {
        if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (each->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        std::array<int, MAX_PASSED> fds{};
        memcpy(fds.data(), CMSG_DATA(each), count * sizeof(int));
        std::array<UniqueFd, MAX_PASSED> owned;  // before anything may throw
        for (size_t i = 0; i < count; ++i) owned[i] = UniqueFd(fds[i]);
        for (size_t i = 0; i < count; ++i) passed.push_back(std::move(owned[i]));
    }
}

}  // namespace

ssize_t sendSome(const UniqueFd& fd, Bytes bytes, int flags) {
    ssize_t sent = -1;
    do {
        sent = send(fd.get(), bytes.data(), bytes.size(), flags | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sentOf(sent);
}

ssize_t sendWith(const UniqueFd& fd, Bytes bytes, const std::vector<int>& passed, int flags) {
    alignas(cmsghdr) std::array<uint8_t, CMSG_SPACE(MAX_PASSED * sizeof(int))> control{};
    iovec vector = vectorOf(bytes.data(), bytes.size());
    msghdr message{};
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(passed.size() * sizeof(int));
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(passed.size() * sizeof(int));
    memcpy(CMSG_DATA(header), passed.data(), passed.size() * sizeof(int));
    ssize_t sent = -1;
    do {
        sent = sendmsg(fd.get(), &message, flags | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sentOf(sent);
}

ssize_t receiveSome(const UniqueFd& fd, uint8_t* bytes, size_t size, int flags) {
    ssize_t received = -1;
    do {
        received = recv(fd.get(), bytes, size, flags);
    } while (received < 0 && errno == EINTR);
    return received;
}

ssize_t receiveWith(const UniqueFd& fd, uint8_t* bytes, size_t size, std::vector<UniqueFd>& passed) {
    alignas(cmsghdr) std::array<uint8_t, CMSG_SPACE(MAX_PASSED * sizeof(int))> control;
    iovec vector = vectorOf(bytes, size);
    msghdr message{};
    ssize_t received = -1;
    do {
        message.msg_iov = &vector;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        received = recvmsg(fd.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    } while (received < 0 && errno == EINTR);
    if (received >= 0 && message.msg_controllen != 0) takeDescriptors(message, passed);
    return received;
}

bool hasUnread(int fd) {
    int bytes = 0;
    return ioctl(fd, FIONREAD, &bytes) == 0 && bytes > 0;
}

std::pair<UniqueFd, UniqueFd> socketPair() {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

ucred peerOf(const UniqueFd& connection) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer : ucred{-1, 0, 0};
}

bool isStreamOf(const UniqueFd& fd, pid_t pid) {
    return optionOf(fd, SO_DOMAIN) == AF_UNIX && optionOf(fd, SO_TYPE) == SOCK_STREAM && peerOf(fd).pid == pid;
}

}  // namespace binder

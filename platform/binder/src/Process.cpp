#include "Process.h"

#include <sys/random.h>

#include "Log.h"

namespace binder {

Key randomKey() {
    Key key{};
    if (getrandom(key.data(), key.size(), 0) != static_cast<ssize_t>(key.size())) {
        __android_log_assert(nullptr, "Binder", "no random numbers");
    }
    return key;
}

const Key& processKey() {
    static const Key key = randomKey();
    return key;
}

ucred peerOf(const UniqueFd& connection) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer : ucred{-1, 0, 0};
}

}  // namespace binder

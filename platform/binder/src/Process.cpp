#include "Process.h"

#include <android/log.h>

#include <sys/random.h>

#include <cerrno>
#include <cstring>

namespace binder {
namespace {

Key randomKey() {
    Key key{};
    ssize_t size = -1;
    do {
        size = getrandom(key.data(), key.size(), 0);
    } while (size < 0 && errno == EINTR);
    if (size != static_cast<ssize_t>(key.size())) {
        __android_log_assert(nullptr, "Binder", "no random numbers: %s", strerror(errno));
    }
    return key;
}

}  // namespace

const Key& processKey() {
    static const Key key = randomKey();
    return key;
}

}  // namespace binder

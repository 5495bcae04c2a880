#include "Process.h"

#include <android/log.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace binder {
namespace {

Key randomKey() {
    Key key{};
    if (getentropy(key.data(), key.size()) != 0) {
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

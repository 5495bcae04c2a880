#include "device/LoopThread.h"

#include <android/log.h>

#include <pthread.h>

namespace device {
namespace {

// Not a thread_local: its first use waits while a library is being loaded, and so would a loop that a static
// initialiser starts.
pthread_key_t currentKey() {
    static const pthread_key_t sKey = [] {
        pthread_key_t key{};
        if (pthread_key_create(&key, nullptr) != 0) __android_log_assert(nullptr, "Looper", "no thread key is left");
        return key;
    }();
    return sKey;
}

}  // namespace

LoopThread::LoopThread() : mOuter(current()) {
    pthread_setspecific(currentKey(), this);
}

LoopThread::~LoopThread() {
    if (hasOutput()) output->flush();
    pthread_setspecific(currentKey(), mOuter);
}

LoopThread* LoopThread::current() {
    return static_cast<LoopThread*>(pthread_getspecific(currentKey()));
}

}  // namespace device

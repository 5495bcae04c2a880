#include <mindroid/Looper.h>

#include "MessageQueue.h"

#include <android/log.h>
#include <device/LoopThread.h>
#include <mindroid/Handler.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>

#include <pthread.h>
#include <unistd.h>

namespace mindroid {

namespace {

constexpr char TAG[] = "Looper";

// Nobody runs a thread's messages once it has ended.
void quitAtThreadEnd(void* value) {
    auto* const looper = static_cast<Looper*>(value);
    looper->quit();
    looper->decStrong();
}

// Where each thread keeps a reference to its looper. Not a thread_local: its first use waits while a library is being
// loaded, and so would a thread that a static initialiser starts.
pthread_key_t looperKey() {
    static const pthread_key_t sKey = [] {
        pthread_key_t key{};
        if (pthread_key_create(&key, quitAtThreadEnd) != 0) __android_log_assert(nullptr, TAG, "no thread key is left");
        return key;
    }();
    return sKey;
}

}  // namespace

Looper::Looper() : mQueue(std::make_unique<MessageQueue>()) {}

Looper::~Looper() = default;

bool Looper::prepare() {
    if (myLooper() != nullptr) {
        Log::e(TAG, "the thread has a looper already");
        return false;
    }
    bind(new Looper());
    return true;
}

void Looper::bind(const sp<Looper>& looper) {
    looper->incStrong();
    pthread_setspecific(looperKey(), looper.get());
}

void Looper::loop() {
    const sp<Looper> self = myLooper();
    if (self == nullptr) return Log::e(TAG, "the thread has no looper to run");
    device::LoopThread thread;
    self->mQueue->state.thread = gettid();
    while (const sp<Message> message = self->mQueue->next(thread)) {
        Message::dispatch(message);
        message->letGo();
    }
    self->mQueue->state.thread = 0;
}

sp<Looper> Looper::myLooper() {
    return static_cast<Looper*>(pthread_getspecific(looperKey()));
}

void Looper::quit() {
    mQueue->close();
}

}  // namespace mindroid

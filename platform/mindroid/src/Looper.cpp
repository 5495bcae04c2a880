#include <mindroid/Looper.h>

#include <mindroid/Handler.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>

#include "MessageQueue.h"

namespace mindroid {

namespace {

constexpr char TAG[] = "Looper";

// The looper of a thread. Nobody runs its messages once the thread has ended, so it quits then.
struct ThreadLooper {
    sp<Looper> looper;

    ~ThreadLooper() {
        if (looper != nullptr) looper->quit();
    }
};

thread_local ThreadLooper sThreadLooper;

}  // namespace

Looper::Looper() : mQueue(std::make_unique<MessageQueue>()) {}

Looper::~Looper() = default;

bool Looper::prepare() {
    if (sThreadLooper.looper != nullptr) {
        Log::e(TAG, "the thread has a looper already");
        return false;
    }
    sThreadLooper.looper = new Looper();
    return true;
}

void Looper::loop() {
    const sp<Looper> self = myLooper();
    if (self == nullptr) return Log::e(TAG, "the thread has no looper to run");
    while (const sp<Message> message = self->mQueue->next()) {
        message->getTarget()->dispatchMessage(message);
        message->letGo();
    }
}

sp<Looper> Looper::myLooper() {
    return sThreadLooper.looper;
}

void Looper::quit() {
    // What the dropped messages held may have held this looper.
    const sp<Looper> self = this;
    mQueue->close();
}

bool Looper::isCurrentThread() const {
    return sThreadLooper.looper.get() == this;
}

}  // namespace mindroid

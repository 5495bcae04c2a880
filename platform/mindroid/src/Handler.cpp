#include <mindroid/Handler.h>

#include "MessageQueue.h"

#include <mindroid/Log.h>
#include <mindroid/SystemClock.h>

#include <algorithm>

namespace mindroid {

namespace {

constexpr char TAG[] = "Handler";

bool refuse(const char* reason) {
    Log::w(TAG, "%s", reason);
    return false;
}

}  // namespace

Handler::Handler() : mLooper(Looper::myLooper()) {}

Handler::Handler(const sp<Looper>& looper) : mLooper(looper) {}

Handler::~Handler() = default;

void Handler::handleMessage(const sp<Message>&) {}

sp<Message> Handler::obtainMessage() {
    return new Message(this);
}

sp<Message> Handler::obtainMessage(int32_t what) {
    sp<Message> message = obtainMessage();
    message->what = what;
    return message;
}

sp<Message> Handler::obtainMessage(int32_t what, const sp<Object>& obj) {
    sp<Message> message = obtainMessage(what);
    message->obj = obj;
    return message;
}

sp<Message> Handler::obtainMessage(int32_t what, int32_t arg1, int32_t arg2) {
    sp<Message> message = obtainMessage(what);
    message->arg1 = arg1;
    message->arg2 = arg2;
    return message;
}

sp<Message> Handler::obtainMessage(const sp<Runnable>& callback) {
    sp<Message> message = obtainMessage();
    message->setCallback(callback);
    return message;
}

bool Handler::sendMessageAtTime(const sp<Message>& message, uint64_t uptimeMillis) {
    if (message == nullptr) return refuse("no message to send");
    if (!message->markSent()) return false;
    message->mTarget = this;
    return enqueue(*message, uptimeMillis);
}

bool Handler::sendEmptyMessageDelayed(int32_t what, int64_t delayMillis) {
    const auto delay = static_cast<uint64_t>(std::max<int64_t>(delayMillis, 0));
    return sendMessageAtTime(obtainMessage(what), SystemClock::uptimeMillis() + delay);
}

void Handler::removeCallbacks(const sp<Runnable>& callback) {
    if (mLooper == nullptr || callback == nullptr) return;
    mLooper->mQueue->remove([this, &callback](const Message& message) {
        return message.mTarget.get() == this && message.mRunnable == callback;
    });
}

bool Handler::enqueue(Message& message, uint64_t dueTime) {
    if (mLooper != nullptr && mLooper->mQueue->enqueue(message, dueTime)) return true;
    message.letGo();
    return refuse("the handler has no live looper: message dropped");
}

}  // namespace mindroid

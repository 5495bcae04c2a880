#include <mindroid/Handler.h>

#include <mindroid/Log.h>
#include <mindroid/Looper.h>
#include <mindroid/SystemClock.h>

#include "MessageQueue.h"

namespace mindroid {

namespace {

constexpr char TAG[] = "Handler";

bool refuse(const char* reason) {
    Log::w(TAG, "%s", reason);
    return false;
}

uint64_t dueTimeAfter(int64_t delayMillis) {
    return delayMillis <= 0 ? MessageQueue::kNow : SystemClock::uptimeMillis() + static_cast<uint64_t>(delayMillis);
}

}  // namespace

Handler::Handler() : mLooper(Looper::myLooper()) {}

Handler::Handler(const sp<Looper>& looper) : mLooper(looper) {}

Handler::~Handler() = default;

void Handler::handleMessage(const sp<Message>&) {}

void Handler::dispatchMessage(const sp<Message>& message) {
    if (message->mRunnable != nullptr) return message->mRunnable->run();
    if (message->mMessageCallback != nullptr) return message->mMessageCallback->handleMessage(message);
    handleMessage(message);
}

sp<Message> Handler::obtainMessage() {
    return Message::create(this);
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

bool Handler::sendMessage(const sp<Message>& message) {
    return send(message, MessageQueue::kNow);
}

bool Handler::sendMessageDelayed(const sp<Message>& message, int64_t delayMillis) {
    return send(message, dueTimeAfter(delayMillis));
}

bool Handler::sendMessageAtTime(const sp<Message>& message, uint64_t uptimeMillis) {
    return send(message, uptimeMillis);
}

bool Handler::sendEmptyMessage(int32_t what) {
    return sendEmptyMessageDelayed(what, 0);
}

bool Handler::sendEmptyMessageDelayed(int32_t what, int64_t delayMillis) {
    return sendNew(obtainMessage(what), delayMillis);
}

bool Handler::post(const sp<Runnable>& task) {
    return postDelayed(task, 0);
}

bool Handler::postDelayed(const sp<Runnable>& task, int64_t delayMillis) {
    return sendNew(obtainMessage(task), delayMillis);
}

void Handler::removeMessages(int32_t what) {
    if (mLooper == nullptr) return;
    mLooper->mQueue->remove([this, what](const Message& message) {
        return message.mTarget.get() == this && message.mRunnable == nullptr && message.what == what;
    });
}

void Handler::removeCallbacks(const sp<Runnable>& task) {
    if (mLooper == nullptr || task == nullptr) return;
    mLooper->mQueue->remove(
        [this, &task](const Message& message) { return message.mTarget.get() == this && message.mRunnable == task; });
}

void Handler::removeCallbacksAndMessages() {
    if (mLooper == nullptr) return;
    mLooper->mQueue->remove([this](const Message& message) { return message.mTarget.get() == this; });
}

bool Handler::send(const sp<Message>& message, uint64_t dueTime) {
    if (message == nullptr) return refuse("no message to send");
    if (!message->markSent()) return false;
    if (message->mTarget.get() != this) message->mTarget = this;
    return enqueue(*message, dueTime);
}

bool Handler::sendNew(const sp<Message>& message, int64_t delayMillis) {
    // Nobody else has it yet.
    message->mSent.store(true, std::memory_order_relaxed);
    return enqueue(*message, dueTimeAfter(delayMillis));
}

bool Handler::enqueue(Message& message, uint64_t dueTime) {
    if (mLooper != nullptr && mLooper->mQueue->enqueue(message, dueTime)) return true;
    message.letGo();
    return refuse("the handler has no live looper: message dropped");
}

}  // namespace mindroid

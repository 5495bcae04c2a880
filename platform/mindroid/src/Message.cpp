#include <mindroid/Message.h>

#include "MessageQueue.h"

#include <mindroid/Handler.h>
#include <mindroid/Log.h>
#include <mindroid/Runnable.h>

#include <utility>

namespace mindroid {

namespace {
constexpr char TAG[] = "Message";
}  // namespace

Message::Message(sp<Handler> target) : mTarget(std::move(target)) {}

Message::~Message() = default;

sp<Message> Message::obtain() {
    return new Message(nullptr);
}

sp<Message> Message::obtain(const sp<Handler>& target) {
    return new Message(target);
}

void Message::setCallback(const sp<Runnable>& callback) {
    if (mSent.load(std::memory_order_relaxed)) return Log::w(TAG, "a message that was sent keeps its callback");
    mRunnable = callback;
}

bool Message::sendToTarget() {
    if (!markSent()) return false;
    if (mTarget != nullptr) return mTarget->enqueue(*this, MessageQueue::NOW);
    Log::w(TAG, "a message without a target can't be sent");
    mSent.store(false, std::memory_order_release);
    return false;
}

bool Message::markSent() {
    if (!mSent.exchange(true, std::memory_order_acq_rel)) return true;
    Log::w(TAG, "a message can be sent only once");
    return false;
}

void Message::dispatch(const sp<Message>& message) {
    if (message->mRunnable != nullptr) return message->mRunnable->run();
    if (message->mMessageCallback != nullptr) return message->mMessageCallback->handleMessage(message);
    message->mTarget->handleMessage(message);
}

void Message::letGo() {
    mRunnable.clear();
    mMessageCallback.clear();
    obj.clear();
    mTarget.clear();
}

}  // namespace mindroid

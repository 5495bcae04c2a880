#include <mindroid/Message.h>

#include <utility>

#include <mindroid/Handler.h>
#include <mindroid/Log.h>
#include <mindroid/Runnable.h>

#include "MessageQueue.h"

namespace mindroid {

namespace {
constexpr char TAG[] = "Message";
}  // namespace

Message::Message() : Object(Adopted{}) {}

Message::~Message() = default;

sp<Message> Message::create(sp<Handler> target) {
    sp<Message> message = sp<Message>::adopt(new Message());
    message->mTarget = std::move(target);
    return message;
}

sp<Message> Message::obtain() {
    return create(nullptr);
}

sp<Message> Message::obtain(const sp<Handler>& target) {
    return create(target);
}

sp<Message> Message::obtain(const sp<Handler>& target, int32_t what) {
    sp<Message> message = create(target);
    message->what = what;
    return message;
}

sp<Message> Message::obtain(const sp<Handler>& target, int32_t what, const sp<Object>& obj) {
    sp<Message> message = obtain(target, what);
    message->obj = obj;
    return message;
}

sp<Message> Message::obtain(const sp<Handler>& target, int32_t what, int32_t arg1, int32_t arg2) {
    sp<Message> message = obtain(target, what);
    message->arg1 = arg1;
    message->arg2 = arg2;
    return message;
}

sp<Message> Message::obtain(const sp<Handler>& target, const sp<Runnable>& callback) {
    sp<Message> message = create(target);
    message->mRunnable = callback;
    return message;
}

void Message::setCallback(const sp<Runnable>& callback) {
    if (wasSent()) return Log::w(TAG, "a message that was sent keeps its callback");
    mRunnable = callback;
}

const sp<Runnable>& Message::getCallback() const {
    return mRunnable;
}

void Message::setTarget(const sp<Handler>& target) {
    if (wasSent()) return Log::w(TAG, "a message that was sent keeps its target");
    mTarget = target;
}

const sp<Handler>& Message::getTarget() const {
    return mTarget;
}

bool Message::sendToTarget() {
    if (!markSent()) return false;
    if (mTarget != nullptr) return mTarget->enqueue(*this, MessageQueue::kNow);
    Log::w(TAG, "a message without a target can't be sent");
    mSent.store(false, std::memory_order_release);
    return false;
}

bool Message::claim() {
    return !wasSent() && !mClaimed.exchange(true, std::memory_order_acq_rel);
}

bool Message::markSent() {
    if (!mSent.exchange(true, std::memory_order_acq_rel)) return true;
    Log::w(TAG, "a message can be sent only once");
    return false;
}

void Message::letGo() {
    mRunnable.clear();
    mMessageCallback.clear();
    obj.clear();
    mTarget.clear();
}

}  // namespace mindroid

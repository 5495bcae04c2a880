#include <mindroid/Runnable.h>

#include <mindroid/Message.h>

#include <utility>

namespace mindroid {

Runnable::Runnable(std::function<void()> task) : mTask(std::move(task)) {}

void Runnable::run() {
    if (mTask) mTask();
}

MessageCallback::MessageCallback(std::function<void(const sp<Message>&)> callback) : mCallback(std::move(callback)) {}

void MessageCallback::handleMessage(const sp<Message>& message) {
    if (mCallback) mCallback(message);
}

VoteCallback::VoteCallback(std::function<void(const sp<Object>&)> callback) : mCallback(std::move(callback)) {}

void VoteCallback::onVoteComplete(const sp<Object>& result) {
    if (mCallback) mCallback(result);
}

}  // namespace mindroid

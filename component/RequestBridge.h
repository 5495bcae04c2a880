#pragma once

#include "component/Interface.h"
#include "component/RequestTrace.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <android/binder_auto_utils.h>
#include <mindroid/Boxes.h>
#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <cstdint>
#include <utility>

namespace hal {

// Carries a request from a service handler to a component, and the component's reply back to the response operation
// with the same serial. Nothing here waits, and the status is always success: errors reach the client by its response
// callback alone. All: any; the response runs on the handler's looper.
//
//   binder thread                       component's thread          handler's looper
//   message = obtainReplyMessage(...)
//   componentCall(message) ...........> fills and sends message ..> response(serial, error[, value])
//
// A component that never replies and drops the message leaves nothing behind but an unanswered serial.

// What a reply message runs on the handler's looper when it comes back: onReply(const mindroid::Message&).
template <typename OnReply>
class ReplyTask {
public:
    ReplyTask(const mindroid::Message* reply, OnReply onReply)
        : mReply(reply), mOnReply(std::move(onReply)), mTrace(RequestTrace::begin()) {}

    void operator()() const {
        mTrace.beginReply();
        mOnReply(*mReply);
        mTrace.end();
    }

private:
    // Borrowed: the message holds this task, and is alive while the task runs. A reference back would keep a message
    // that is dropped without a reply alive for ever.
    const mindroid::Message* mReply;
    OnReply mOnReply;
    RequestTrace mTrace;
};

template <typename OnReply>
[[nodiscard]] mindroid::sp<mindroid::Message> obtainReplyMessage(const mindroid::sp<mindroid::Handler>& handler,
                                                                 OnReply onReply) {
    mindroid::sp<mindroid::Message> message = handler->obtainMessage();
    message->setCallback(new mindroid::Runnable(ReplyTask<OnReply>(message.get(), std::move(onReply))));
    return message;
}

// The error of a reply; not yet limited to what a client may see.
[[nodiscard]] inline auto replyError(const mindroid::Message& reply) {
    return static_cast<interface::SUBSYS_Errno>(reply.arg2);
}

// The value of a reply, null for an error and for a reply without one. It lives as long as the message.
template <typename Box>
[[nodiscard]] const Box* replyValue(const mindroid::Message& reply) {
    return reply.arg2 == 0 ? static_cast<const Box*>(reply.obj.get()) : nullptr;
}

// componentCall(message), response(serial, error).
template <typename ComponentCall, typename ResponseCall>
ndk::ScopedAStatus callComponentRspVoid(uint32_t serial, mindroid::sp<mindroid::Handler> handler,
                                        const ComponentCall& componentCall, ResponseCall response) {
    componentCall(obtainReplyMessage(handler, [serial, response = std::move(response)](const auto& reply) {
        (void)response(static_cast<int32_t>(serial), replyError(reply));
    }));
    return ndk::ScopedAStatus::ok();
}

// componentCall(message), response(serial, error, value); the value of a reply without one is 0.
template <typename ComponentCall, typename ResponseCall, typename Box, typename Value>
ndk::ScopedAStatus callComponentRspValue(uint32_t serial, const mindroid::sp<mindroid::Handler>& handler,
                                         const ComponentCall& componentCall, ResponseCall response) {
    componentCall(obtainReplyMessage(handler, [serial, response = std::move(response)](const auto& reply) {
        const Box* value = replyValue<Box>(reply);
        (void)response(static_cast<int32_t>(serial), replyError(reply),
                       value != nullptr ? static_cast<Value>(value->value()) : Value());
    }));
    return ndk::ScopedAStatus::ok();
}

// componentCall(message), response(serial, error, data, length); null and 0 for a reply without bytes. The bytes live
// only as long as the call.
template <typename ComponentCall, typename ResponseCall>
ndk::ScopedAStatus callComponentRspByteArray(uint32_t serial, const mindroid::sp<mindroid::Handler>& handler,
                                             const ComponentCall& componentCall, ResponseCall response) {
    componentCall(obtainReplyMessage(handler, [serial, response = std::move(response)](const auto& reply) {
        const auto* bytes = replyValue<mindroid::ByteArray>(reply);
        const uint8_t* data = bytes != nullptr ? bytes->data() : nullptr;
        const size_t length = bytes != nullptr ? bytes->size() : 0;
        (void)response(static_cast<int32_t>(serial), replyError(reply), data, static_cast<uint32_t>(length));
    }));
    return ndk::ScopedAStatus::ok();
}

}  // namespace hal

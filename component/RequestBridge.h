#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <android/binder_auto_utils.h>
#include <mindroid/Boxes.h>
#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <cstddef>
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

// A message that hands itself to `onReply(const mindroid::Message&)` on the handler's looper when it comes back.
template <typename OnReply>
[[nodiscard]] mindroid::sp<mindroid::Message> obtainReplyMessage(const mindroid::sp<mindroid::Handler>& handler,
                                                                 OnReply onReply) {
    mindroid::sp<mindroid::Message> message = handler->obtainMessage();
    // Borrowed: the message holds this closure, and is alive while it runs. A reference back would keep a message that
    // is never answered alive for ever.
    const mindroid::Message* reply = message.get();
    message->setCallback(new mindroid::Runnable([reply, onReply = std::move(onReply)] { onReply(*reply); }));
    return message;
}

// The error of a reply; not yet limited to what a client may see.
[[nodiscard]] inline auto replyError(const mindroid::Message& reply) {
    return static_cast<::aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno>(reply.arg2);
}

// The value of a reply: null for an error, for no value, and for a box of another class.
template <typename Box>
[[nodiscard]] mindroid::sp<Box> replyValue(const mindroid::Message& reply) {
    return reply.arg2 == 0 ? mindroid::object_cast<Box>(reply.obj) : mindroid::sp<Box>();
}

// The place of one more request among those of the process that still wait, or null when 64 MiB of payload or 65,536
// requests do.
[[nodiscard]] mindroid::sp<mindroid::Object> enterRequests(size_t payloadSize);

// componentCall(message), onReply(const mindroid::Message&). While too many requests wait the component is not asked,
// and onReply gets a GENERIC_FAILURE at once, on the calling thread.
template <typename ComponentCall, typename OnReply>
ndk::ScopedAStatus callComponent(const mindroid::sp<mindroid::Handler>& handler, size_t payloadSize,
                                 const ComponentCall& componentCall, OnReply onReply) {
    if (auto place = enterRequests(payloadSize)) {
        componentCall(obtainReplyMessage(
            handler, [place = std::move(place), onReply = std::move(onReply)](const auto& reply) { onReply(reply); }));
    } else {
        const mindroid::sp<mindroid::Message> refusal = mindroid::Message::obtain();
        refusal->arg2 = static_cast<int32_t>(
            ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::SUBSYS_Errno::GENERIC_FAILURE);
        onReply(*refusal);
    }
    return ndk::ScopedAStatus::ok();
}

// componentCall(message), response(serial, error).
template <typename ComponentCall, typename ResponseCall>
ndk::ScopedAStatus callComponentRspVoid(uint32_t serial, const mindroid::sp<mindroid::Handler>& handler,
                                        const ComponentCall& componentCall, ResponseCall response) {
    return callComponent(handler, 0, componentCall, [serial, response = std::move(response)](const auto& reply) {
        (void)response(static_cast<int32_t>(serial), replyError(reply));
    });
}

// componentCall(message), response(serial, error, value); the value of a reply without one is 0.
template <typename Box, typename Value, typename ComponentCall, typename ResponseCall>
ndk::ScopedAStatus callComponentRspValue(uint32_t serial, const mindroid::sp<mindroid::Handler>& handler,
                                         const ComponentCall& componentCall, ResponseCall response) {
    return callComponent(handler, 0, componentCall, [serial, response = std::move(response)](const auto& reply) {
        const mindroid::sp<Box> value = replyValue<Box>(reply);
        (void)response(static_cast<int32_t>(serial), replyError(reply), value ? Value(value->value()) : Value());
    });
}

// componentCall(message), response(serial, error, data, length); null and 0 for a reply without bytes. The bytes live
// only as long as the call.
template <typename ComponentCall, typename ResponseCall>
ndk::ScopedAStatus callComponentRspByteArray(uint32_t serial, const mindroid::sp<mindroid::Handler>& handler,
                                             const ComponentCall& componentCall, ResponseCall response) {
    return callComponent(handler, 0, componentCall, [serial, response = std::move(response)](const auto& reply) {
        const mindroid::sp<mindroid::ByteArray> bytes = replyValue<mindroid::ByteArray>(reply);
        const uint8_t* data = bytes ? bytes->data() : nullptr;
        const auto length = static_cast<uint32_t>(bytes ? bytes->size() : 0);
        (void)response(static_cast<int32_t>(serial), replyError(reply), data, length);
    });
}

}  // namespace hal

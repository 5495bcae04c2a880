#pragma once

#include "compliance/Verdict.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Object.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace compliance {

// What became of one reply message.
struct Reply {
    int answers = 0;
    bool isDropped = false;
    int32_t error = 0;
    mindroid::sp<mindroid::Object> value;
};

// A reply message for a component, and who waits for it.
class ReplyProbe {
public:
    // The reply runs on the handler's looper.
    explicit ReplyProbe(const mindroid::sp<mindroid::Handler>& handler);

    // Gives the message away. Once.
    [[nodiscard]] mindroid::sp<mindroid::Message> takeMessage() { return std::move(mMessage); }
    // Returns when it was answered, when nobody holds it any more, or when the time is over.
    [[nodiscard]] Reply await(std::chrono::milliseconds limit) const;
    // As it is now.
    [[nodiscard]] Reply get() const;

private:
    struct State;

    std::shared_ptr<State> mState;
    mindroid::sp<mindroid::Message> mMessage;
};

// Whether all bytes may be read; what a build without AddressSanitizer can't tell is not checked.
[[nodiscard]] Verdict readable(const void* bytes, size_t size);

// Counts what the message loop refuses to send a second time, and passes warnings and errors on to stderr. Once.
void startLogWatch();
[[nodiscard]] int refusedMessages();

}  // namespace compliance

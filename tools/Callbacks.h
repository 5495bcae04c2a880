#pragma once

#include "tools/Json.h"
#include "tools/Mailbox.h"

#include <stubs/Sinks.h>

#include <chrono>
#include <memory>
#include <string_view>
#include <utility>

namespace subsysctl {

// A callback object of this client: each call becomes JSON under its kind and goes into the mailbox, an
// indication with the time when it came.
template <class I>
class Reporter final : public subsys_stubs::Sink<I, Reporter<I>> {
public:
    // `kind` is what the interface calls the object as an argument: response, indication or callback.
    Reporter(const char* kind, std::shared_ptr<Mailbox> mailbox) : mKind(kind), mMailbox(std::move(mailbox)) {}

    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        Json call = callToJson(mKind, method, arguments...);
        if (mKind == std::string_view("indication")) {
            call["time"] = timestamp(std::chrono::system_clock::now());
            mMailbox->putIndication(std::move(call));
        } else {
            mMailbox->putAnswer(std::move(call));
        }
        return ndk::ScopedAStatus::ok();
    }

private:
    const char* const mKind;
    const std::shared_ptr<Mailbox> mMailbox;
};

template <class I>
std::shared_ptr<I> newReporter(const char* kind, const std::shared_ptr<Mailbox>& mailbox) {
    return ndk::SharedRefBase::make<Reporter<I>>(kind, mailbox);
}

}  // namespace subsysctl

#pragma once

#include "tools/Json.h"
#include "tools/Mailbox.h"

#include <stubs/Sinks.h>

#include <memory>
#include <string_view>
#include <utility>

namespace subsysctl {

// A callback object of this client: each call becomes JSON under its kind and goes into the mailbox.
template <class I>
class Reporter final : public subsys_stubs::Sink<I, Reporter<I>> {
public:
    // `kind` is what the interface calls the object as an argument: response, indication or callback.
    Reporter(const char* kind, std::shared_ptr<Mailbox> mailbox) : mKind(kind), mMailbox(std::move(mailbox)) {}

    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        const bool isIndication = mKind == std::string_view("indication");
        const auto put = isIndication ? &Mailbox::putIndication : &Mailbox::putAnswer;
        ((*mMailbox).*put)(callToJson(mKind, method, arguments...));
        return ndk::ScopedAStatus::ok();
    }

private:
    const char* const mKind;
    const std::shared_ptr<Mailbox> mMailbox;
};

}  // namespace subsysctl

#pragma once

#include "tests/fuzz/support/Require.h"

#include <android/binder_to_string.h>
#include <stubs/Sinks.h>

#include <array>
#include <memory>
#include <string>

namespace fuzz {

using namespace subsys_stubs::interface;

// A callback that reads all it is told.
template <class I>
class Callback : public subsys_stubs::Sink<I, Callback<I>> {
public:
    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        std::string text = method.name;
        ((text += android::internal::ToString(arguments)), ...);
        require(!text.empty());
        return ndk::ScopedAStatus::ok();
    }
};

// The one of its interface.
template <class I>
std::shared_ptr<I> callback() {
    static const std::shared_ptr<I> sCallback = ndk::SharedRefBase::make<Callback<I>>();
    return sCallback;
}

// One of each interface that clients implement.
inline std::array<ndk::SpAIBinder, 5> callbacks() {
    return {callback<ISubsysResponse>()->asBinder(), callback<ISubsysIndication>()->asBinder(),
            callback<ISubsysIccMetaCallback>()->asBinder(), callback<IImsOrtcResponse>()->asBinder(),
            callback<IImsOrtcIndication>()->asBinder()};
}

}  // namespace fuzz

#pragma once

#include <android/binder_to_string.h>
#include <stubs/Sinks.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace stubs_test {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// A service that notes each call: "getLcdInfo(1, 2)". Not for calls from several threads at once.
class RecordingSubsys : public subsys_stubs::Sink<interface::ISubsys, RecordingSubsys> {
public:
    std::vector<std::string> calls;
    std::function<ndk::ScopedAStatus()> answer = [] { return ndk::ScopedAStatus::ok(); };

    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        std::string text = method.name;
        const char* separator = "(";
        const auto print = [&](const auto& argument) {
            text += std::exchange(separator, ", ");
            if constexpr (requires { argument->asBinder(); }) {
                text += argument ? "object" : "null";
            } else {
                text += android::internal::ToString(argument);
            }
        };
        (print(arguments), ...);
        calls.push_back(text + ")");
        return answer();
    }
};

}  // namespace stubs_test

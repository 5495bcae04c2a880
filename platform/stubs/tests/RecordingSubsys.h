#pragma once

#include <stubs/Sinks.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace stubs_test {

namespace binder = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// A value of the interface as text; of an object only whether there is one.
template <class T>
void print(std::ostream& out, const T& value) {
    if constexpr (subsys_stubs::Record<T>) {
        out << value.toString();
    } else if constexpr (subsys_stubs::isInterfacePointer<T>) {
        out << (value ? "object" : "null");
    } else {
        out << value;
    }
}

// A service that notes each call: "getLcdInfo(1, 2)". Not for calls from several threads at once.
class RecordingSubsys : public subsys_stubs::Sink<binder::ISubsys, RecordingSubsys> {
public:
    std::vector<std::string> calls;
    std::function<ndk::ScopedAStatus()> answer = [] { return ndk::ScopedAStatus::ok(); };

    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        std::ostringstream text;
        const char* separator = "(";
        ((print(text << std::exchange(separator, ", "), arguments)), ...);
        calls.push_back(method.name + text.str() + ")");
        return answer();
    }
};

}  // namespace stubs_test

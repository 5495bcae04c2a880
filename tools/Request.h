#pragma once

#include "tools/Json.h"
#include "tools/Mailbox.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace subsysctl {

// The callback objects that a request needs.
enum class Needs { NOTHING, RF, IMS };

// One request with its arguments, ready to be sent with any serial, and what its answer looks like.
struct Request {
    using Service = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;

    std::string method;
    // What becomes of values that don't fit into their fields.
    std::vector<std::string> warnings;
    Needs needs = Needs::NOTHING;
    // A callback object of the request's own reports to the mailbox.
    std::function<ndk::ScopedAStatus(Service&, int32_t serial, const std::shared_ptr<Mailbox>&)> send;
    // Empty when nothing answers the request.
    std::function<bool(const Json&, int32_t serial)> isAnswer;
};

// The name under which the service is published.
[[nodiscard]] inline std::string serviceName() {
    return std::string(Request::Service::descriptor) + "/default";
}

}  // namespace subsysctl

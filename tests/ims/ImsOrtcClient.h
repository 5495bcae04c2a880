#pragma once

#include "tests/support/Await.h"

#include <stubs/Sinks.h>

#include <string>
#include <utility>
#include <variant>

namespace test {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// One call of a client's callback: the method, and what came with it.
template <typename... Values>
struct CallOf {
    std::string method;
    std::variant<Values...> value;

    bool operator==(const CallOf&) const = default;
};

// A callback of this process that keeps what it is told, and fails, which must concern nobody else.
template <typename I, typename CallType>
class ImsClient : public subsys_stubs::Sink<I, ImsClient<I, CallType>> {
public:
    using Call = CallType;

    Recorder<Call> calls;

    template <typename Method, typename Value>
    ndk::ScopedAStatus onCall(const Method& method, const Value& value) {
        calls.add({method.name, value});
        return ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    }
    template <typename Method, typename First, typename Second>
    ndk::ScopedAStatus onCall(const Method& method, const First& first, const Second& second) {
        return onCall(method, std::pair(first, second));
    }
};

using ImsResponseClient =
    ImsClient<interface::IImsOrtcResponse,
              CallOf<interface::SubsysResponseInfo,
                     std::pair<interface::SubsysResponseInfo, interface::ImsRtpRedunSignalMsgRspInfo>>>;

using ImsIndicationClient = ImsClient<
    interface::IImsOrtcIndication,
    CallOf<interface::ImsRtpPubIpAddrInfo, interface::ImsRtpDataInfo, interface::OrtcStatus, interface::OrtcConnectInfo,
           interface::ImsRtpRedunSignalMsg, interface::ImsRtpRedunDataLinkStateInfo>>;

}  // namespace test

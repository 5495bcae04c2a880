#pragma once

#include "tests/support/Await.h"

#include <stubs/Sinks.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace test {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// One response as the client saw it.
struct Response {
    std::string method;
    interface::SubsysResponseInfo info;
    std::variant<std::monostate, int8_t, std::string, interface::IccStateInfo, interface::IccRespInfo> value{};

    bool operator==(const Response&) const = default;
};

// A response callback of this process that keeps what it is told.
class SubsysResponseClient : public subsys_stubs::Sink<interface::ISubsysResponse, SubsysResponseClient> {
public:
    Recorder<Response> responses;

    template <class Method, class... Value>
    ndk::ScopedAStatus onCall(const Method& method, const interface::SubsysResponseInfo& info, const Value&... value) {
        responses.add({method.name, info, value...});
        return ndk::ScopedAStatus::ok();
    }
};

// A callback of meta commands that keeps what it is told, and fails, which must concern nobody.
class IccMetaClient : public subsys_stubs::Sink<interface::ISubsysIccMetaCallback, IccMetaClient> {
public:
    Recorder<interface::IccMetaRespInfo> answers;

    template <class Method>
    ndk::ScopedAStatus onCall(const Method&, const interface::IccMetaRespInfo& info) {
        answers.add(info);
        return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    }
};

// One event as the client saw it.
struct Indication {
    std::string method;
    std::variant<bool, int8_t, interface::IccStateInfo, interface::IccPerceptionInfo, interface::IccIndInfo> value;

    bool operator==(const Indication&) const = default;
};

// An indication callback of this process that keeps what it is told.
class SubsysIndicationClient : public subsys_stubs::Sink<interface::ISubsysIndication, SubsysIndicationClient> {
public:
    Recorder<Indication> indications;

    template <class Method, class Value>
    ndk::ScopedAStatus onCall(const Method& method, const Value& value) {
        indications.add({method.name, value});
        return ndk::ScopedAStatus::ok();
    }
};

}  // namespace test

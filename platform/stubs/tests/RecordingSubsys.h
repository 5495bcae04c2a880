#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsys.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace stubs_test {

namespace binder = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// "getLcdInfo(1, 2)"; of an object only whether there is one.
template <class I, uint32_t Code, class... Args>
std::string printCall(const Args&... arguments) {
    std::ostringstream text;
    const char* separator = "(";
    const auto print = [&](const auto& argument) {
        text << separator;
        separator = ", ";
        if constexpr (requires { argument->asBinder(); }) {
            text << (argument ? "object" : "null");
        } else {
            subsys_stubs::print(text, argument);
        }
    };
    text << std::get<Code - FIRST_CALL_TRANSACTION>(I::methods()).name;
    (print(arguments), ...);
    text << ")";
    return text.str();
}

// A service that notes each call. Not for calls from several threads at once.
class RecordingSubsys : public binder::BnSubsys {
    using Status = ndk::ScopedAStatus;
    template <class T>
    using Ref = const std::shared_ptr<T>&;

public:
    std::vector<std::string> calls;
    std::function<Status()> answer = [] { return Status::ok(); };

    // clang-format off
    Status getSwtpStatus(int32_t serial) override { return record<TRANSACTION_getSwtpStatus>(serial); }
    Status setCallback(Ref<binder::ISubsysResponse> response, Ref<binder::ISubsysIndication> indication) override { return record<TRANSACTION_setCallback>(response, indication); }
    Status getLcdInfo(int32_t serial, int32_t type) override { return record<TRANSACTION_getLcdInfo>(serial, type); }
    Status setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk) override { return record<TRANSACTION_setMipiFreqClk>(serial, id, freqClk); }
    Status setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk) override { return record<TRANSACTION_setOscFreqClk>(serial, id, freqClk); }
    Status getNvramData(int32_t serial, int32_t id, int32_t size) override { return record<TRANSACTION_getNvramData>(serial, id, size); }
    Status setImsOrtcCallback(Ref<binder::IImsOrtcResponse> response, Ref<binder::IImsOrtcIndication> indication) override { return record<TRANSACTION_setImsOrtcCallback>(response, indication); }
    Status setCallInfo(int32_t serial, const binder::CallInfo& info) override { return record<TRANSACTION_setCallInfo>(serial, info); }
    Status setOrtcRoomInfo(int32_t serial, const binder::OrtcRoomInfo& info) override { return record<TRANSACTION_setOrtcRoomInfo>(serial, info); }
    Status sendImsRtpData(int32_t serial, const binder::ImsRtpDataInfo& info) override { return record<TRANSACTION_sendImsRtpData>(serial, info); }
    Status setImsRtpRemotePubIpAddr(int32_t serial, const binder::ImsRtpPubIpAddrInfo& info) override { return record<TRANSACTION_setImsRtpRemotePubIpAddr>(serial, info); }
    Status setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna, int32_t state) override { return record<TRANSACTION_setIccTuningState>(serial, technology, band, antenna, state); }
    Status setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state) override { return record<TRANSACTION_setIccWifiAntState>(serial, antenna, state); }
    Status setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna, int32_t state) override { return record<TRANSACTION_setIccSatelliteAntState>(serial, technology, antenna, state); }
    Status getIccState(int32_t serial) override { return record<TRANSACTION_getIccState>(serial); }
    Status killProcess(int32_t serial, int32_t pid, const std::string& name) override { return record<TRANSACTION_killProcess>(serial, pid, name); }
    Status sendIccCmd(int32_t serial, const binder::IccReqInfo& info) override { return record<TRANSACTION_sendIccCmd>(serial, info); }
    Status sendIccMetaCmd(const binder::IccMetaReqInfo& info, Ref<binder::ISubsysIccMetaCallback> callback) override { return record<TRANSACTION_sendIccMetaCmd>(info, callback); }
    Status sendImsRtpRedunSignalMsg(int32_t serial, const binder::ImsRtpRedunSignalMsg& msg) override { return record<TRANSACTION_sendImsRtpRedunSignalMsg>(serial, msg); }
    // clang-format on

private:
    template <uint32_t Code, class... Args>
    Status record(const Args&... arguments) {
        calls.push_back(printCall<binder::ISubsys, Code>(arguments...));
        return answer();
    }
};

}  // namespace stubs_test

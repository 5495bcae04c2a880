#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysResponse.h>

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "tests/support/Await.h"

namespace test {

namespace pkg = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// One response as the client saw it.
struct Response {
    std::string method;
    pkg::SubsysResponseInfo info;
    std::variant<std::monostate, int8_t, std::string, pkg::IccStateInfo, pkg::IccRespInfo> value{};

    bool operator==(const Response&) const = default;
};

// A response callback of this process that keeps what it is told.
class SubsysResponseClient : public pkg::BnSubsysResponse {
public:
    using Info = pkg::SubsysResponseInfo;
    using Status = ndk::ScopedAStatus;

    Recorder<Response> responses;

    Status getSwtpStatusResponse(const Info& info, int8_t status) override {
        return keep({"getSwtpStatusResponse", info, status});
    }
    Status getLcdInfoResponse(const Info& info, const std::string& lcdInfo) override {
        return keep({"getLcdInfoResponse", info, lcdInfo});
    }
    Status setMipiFreqClkResponse(const Info& info) override { return keep({"setMipiFreqClkResponse", info}); }
    Status setOscFreqClkResponse(const Info& info) override { return keep({"setOscFreqClkResponse", info}); }
    Status getNvramDataResponse(const Info& info, const std::string& data) override {
        return keep({"getNvramDataResponse", info, data});
    }
    Status setIccTuningStateResponse(const Info& info) override { return keep({"setIccTuningStateResponse", info}); }
    Status setIccWifiAntStateResponse(const Info& info) override { return keep({"setIccWifiAntStateResponse", info}); }
    Status setIccSatelliteAntStateResponse(const Info& info) override {
        return keep({"setIccSatelliteAntStateResponse", info});
    }
    Status getIccStateResponse(const Info& info, const pkg::IccStateInfo& state) override {
        return keep({"getIccStateResponse", info, state});
    }
    Status killProcessResponse(const Info& info) override { return keep({"killProcessResponse", info}); }
    Status sendIccCmdResponse(const Info& info, const pkg::IccRespInfo& respInfo) override {
        return keep({"sendIccCmdResponse", info, respInfo});
    }

private:
    Status keep(Response response) {
        responses.add(std::move(response));
        return Status::ok();
    }
};

// A callback of meta commands that keeps what it is told, and fails, which must concern nobody.
class IccMetaClient : public pkg::BnSubsysIccMetaCallback {
public:
    Recorder<pkg::IccMetaRespInfo> answers;

    ndk::ScopedAStatus onIccMetaResp(const pkg::IccMetaRespInfo& info) override {
        answers.add(info);
        return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    }
};

// One event as the client saw it.
struct Indication {
    std::string method;
    std::variant<bool, int8_t, pkg::IccStateInfo, pkg::IccPerceptionInfo, pkg::IccIndInfo> value;

    bool operator==(const Indication&) const = default;
};

// An indication callback of this process that keeps what it is told.
class SubsysIndicationClient : public pkg::BnSubsysIndication {
public:
    using Status = ndk::ScopedAStatus;

    Recorder<Indication> indications;

    Status sendSubsysStateChanged(bool state) override { return keep({"sendSubsysStateChanged", state}); }
    Status sendSwtpStatusChanged(int8_t status) override { return keep({"sendSwtpStatusChanged", status}); }
    Status sendiccStateChanged(const pkg::IccStateInfo& info) override { return keep({"sendiccStateChanged", info}); }
    Status notifyIccPercStateChangedInd(const pkg::IccPerceptionInfo& info) override {
        return keep({"notifyIccPercStateChangedInd", info});
    }
    Status notifyIccInfoChanged(const pkg::IccIndInfo& info) override { return keep({"notifyIccInfoChanged", info}); }

private:
    Status keep(Indication indication) {
        indications.add(std::move(indication));
        return Status::ok();
    }
};

}  // namespace test

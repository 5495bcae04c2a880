#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcResponse.h>

#include <string>
#include <utility>
#include <variant>

#include "tests/support/Await.h"

namespace test {

namespace pkg = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// One call of a client's callback: the method, and what came with it.
template <typename... Values>
struct CallOf {
    std::string method;
    std::variant<Values...> value;

    bool operator==(const CallOf&) const = default;
};

// A response callback of this process that keeps what it is told.
class ImsResponseClient : public pkg::BnImsOrtcResponse {
public:
    using Info = pkg::SubsysResponseInfo;
    using Call = CallOf<Info, std::pair<Info, pkg::ImsRtpRedunSignalMsgRspInfo>>;
    using Status = ndk::ScopedAStatus;

    Recorder<Call> calls;

    Status setCallInfoResponse(const Info& info) override { return keep({"setCallInfoResponse", info}); }
    Status setOrtcRoomInfoResponse(const Info& info) override { return keep({"setOrtcRoomInfoResponse", info}); }
    Status sendImsRtpDataResponse(const Info& info) override { return keep({"sendImsRtpDataResponse", info}); }
    Status setImsRtpRemotePubIpAddrResponse(const Info& info) override {
        return keep({"setImsRtpRemotePubIpAddrResponse", info});
    }
    Status sendImsRtpRedunSignalMsgResponse(const Info& info,
                                            const pkg::ImsRtpRedunSignalMsgRspInfo& rspInfo) override {
        return keep({"sendImsRtpRedunSignalMsgResponse", std::pair(info, rspInfo)});
    }

private:
    // A failure must concern nobody else.
    Status keep(Call call) {
        calls.add(std::move(call));
        return Status::fromStatus(STATUS_FAILED_TRANSACTION);
    }
};

// An indication callback of this process that keeps what it is told.
class ImsIndicationClient : public pkg::BnImsOrtcIndication {
public:
    using Call = CallOf<pkg::ImsRtpPubIpAddrInfo, pkg::ImsRtpDataInfo, pkg::OrtcStatus, pkg::OrtcConnectInfo,
                        pkg::ImsRtpRedunSignalMsg, pkg::ImsRtpRedunDataLinkStateInfo>;
    using Status = ndk::ScopedAStatus;

    Recorder<Call> calls;

    Status LocalPubIpAddrChanged(const pkg::ImsRtpPubIpAddrInfo& info) override {
        return keep({"LocalPubIpAddrChanged", info});
    }
    Status recvImsRtpData(const pkg::ImsRtpDataInfo& info) override { return keep({"recvImsRtpData", info}); }
    Status notifyOrtcStatus(const pkg::OrtcStatus& status) override { return keep({"notifyOrtcStatus", status}); }
    Status notifyConnectInfo(const pkg::OrtcConnectInfo& info) override { return keep({"notifyConnectInfo", info}); }
    Status recvImsRtpRedunSignalMsgInd(const pkg::ImsRtpRedunSignalMsg& msg) override {
        return keep({"recvImsRtpRedunSignalMsgInd", msg});
    }
    Status notifyImsRtpRedunDataLinkStateInd(const pkg::ImsRtpRedunDataLinkStateInfo& info) override {
        return keep({"notifyImsRtpRedunDataLinkStateInd", info});
    }

private:
    Status keep(Call call) {
        calls.add(std::move(call));
        return Status::fromStatus(STATUS_FAILED_TRANSACTION);
    }
};

}  // namespace test

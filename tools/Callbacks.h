#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysResponse.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "tools/Json.h"
#include "tools/Mailbox.h"

// The callback objects of this client: each call becomes JSON and goes into the mailbox.
namespace subsysctl {

namespace binder = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// `put` is where calls of this interface go, `kKind` what they are called.
template <class Bn, const char* kKind, void (Mailbox::*put)(Json)>
class Reporter : public Bn {
public:
    explicit Reporter(std::shared_ptr<Mailbox> mailbox) : mMailbox(std::move(mailbox)) {}

protected:
    template <class I, uint32_t Code, class... Args>
    ndk::ScopedAStatus report(const Args&... arguments) {
        (*mMailbox.*put)(callToJson<I, Code>(kKind, arguments...));
        return ndk::ScopedAStatus::ok();
    }

private:
    const std::shared_ptr<Mailbox> mMailbox;
};

inline constexpr char kResponse[] = "response";
inline constexpr char kIndication[] = "indication";
inline constexpr char kCallback[] = "callback";

class RfResponse final : public Reporter<binder::BnSubsysResponse, kResponse, &Mailbox::putAnswer> {
public:
    using Reporter::Reporter;

    ndk::ScopedAStatus getSwtpStatusResponse(const binder::SubsysResponseInfo& info, int8_t status) override {
        return report<ISubsysResponse, TRANSACTION_getSwtpStatusResponse>(info, status);
    }
    ndk::ScopedAStatus getLcdInfoResponse(const binder::SubsysResponseInfo& info, const std::string& lcdInfo) override {
        return report<ISubsysResponse, TRANSACTION_getLcdInfoResponse>(info, lcdInfo);
    }
    ndk::ScopedAStatus setMipiFreqClkResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_setMipiFreqClkResponse>(info);
    }
    ndk::ScopedAStatus setOscFreqClkResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_setOscFreqClkResponse>(info);
    }
    ndk::ScopedAStatus getNvramDataResponse(const binder::SubsysResponseInfo& info, const std::string& data) override {
        return report<ISubsysResponse, TRANSACTION_getNvramDataResponse>(info, data);
    }
    ndk::ScopedAStatus setIccTuningStateResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_setIccTuningStateResponse>(info);
    }
    ndk::ScopedAStatus setIccWifiAntStateResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_setIccWifiAntStateResponse>(info);
    }
    ndk::ScopedAStatus setIccSatelliteAntStateResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_setIccSatelliteAntStateResponse>(info);
    }
    ndk::ScopedAStatus getIccStateResponse(const binder::SubsysResponseInfo& info,
                                           const binder::IccStateInfo& state) override {
        return report<ISubsysResponse, TRANSACTION_getIccStateResponse>(info, state);
    }
    ndk::ScopedAStatus killProcessResponse(const binder::SubsysResponseInfo& info) override {
        return report<ISubsysResponse, TRANSACTION_killProcessResponse>(info);
    }
    ndk::ScopedAStatus sendIccCmdResponse(const binder::SubsysResponseInfo& info,
                                          const binder::IccRespInfo& respInfo) override {
        return report<ISubsysResponse, TRANSACTION_sendIccCmdResponse>(info, respInfo);
    }
};

class RfIndication final : public Reporter<binder::BnSubsysIndication, kIndication, &Mailbox::putIndication> {
public:
    using Reporter::Reporter;

    ndk::ScopedAStatus sendSubsysStateChanged(bool state) override {
        return report<ISubsysIndication, TRANSACTION_sendSubsysStateChanged>(state);
    }
    ndk::ScopedAStatus sendSwtpStatusChanged(int8_t status) override {
        return report<ISubsysIndication, TRANSACTION_sendSwtpStatusChanged>(status);
    }
    ndk::ScopedAStatus sendiccStateChanged(const binder::IccStateInfo& info) override {
        return report<ISubsysIndication, TRANSACTION_sendiccStateChanged>(info);
    }
    ndk::ScopedAStatus notifyIccPercStateChangedInd(const binder::IccPerceptionInfo& info) override {
        return report<ISubsysIndication, TRANSACTION_notifyIccPercStateChangedInd>(info);
    }
    ndk::ScopedAStatus notifyIccInfoChanged(const binder::IccIndInfo& info) override {
        return report<ISubsysIndication, TRANSACTION_notifyIccInfoChanged>(info);
    }
};

class IccMetaCallback final : public Reporter<binder::BnSubsysIccMetaCallback, kCallback, &Mailbox::putAnswer> {
public:
    using Reporter::Reporter;

    ndk::ScopedAStatus onIccMetaResp(const binder::IccMetaRespInfo& info) override {
        return report<ISubsysIccMetaCallback, TRANSACTION_onIccMetaResp>(info);
    }
};

class ImsResponse final : public Reporter<binder::BnImsOrtcResponse, kResponse, &Mailbox::putAnswer> {
public:
    using Reporter::Reporter;

    ndk::ScopedAStatus setCallInfoResponse(const binder::SubsysResponseInfo& info) override {
        return report<IImsOrtcResponse, TRANSACTION_setCallInfoResponse>(info);
    }
    ndk::ScopedAStatus setOrtcRoomInfoResponse(const binder::SubsysResponseInfo& info) override {
        return report<IImsOrtcResponse, TRANSACTION_setOrtcRoomInfoResponse>(info);
    }
    ndk::ScopedAStatus sendImsRtpDataResponse(const binder::SubsysResponseInfo& info) override {
        return report<IImsOrtcResponse, TRANSACTION_sendImsRtpDataResponse>(info);
    }
    ndk::ScopedAStatus setImsRtpRemotePubIpAddrResponse(const binder::SubsysResponseInfo& info) override {
        return report<IImsOrtcResponse, TRANSACTION_setImsRtpRemotePubIpAddrResponse>(info);
    }
    ndk::ScopedAStatus sendImsRtpRedunSignalMsgResponse(const binder::SubsysResponseInfo& info,
                                                        const binder::ImsRtpRedunSignalMsgRspInfo& rspInfo) override {
        return report<IImsOrtcResponse, TRANSACTION_sendImsRtpRedunSignalMsgResponse>(info, rspInfo);
    }
};

class ImsIndication final : public Reporter<binder::BnImsOrtcIndication, kIndication, &Mailbox::putIndication> {
public:
    using Reporter::Reporter;

    ndk::ScopedAStatus LocalPubIpAddrChanged(const binder::ImsRtpPubIpAddrInfo& info) override {
        return report<IImsOrtcIndication, TRANSACTION_LocalPubIpAddrChanged>(info);
    }
    ndk::ScopedAStatus recvImsRtpData(const binder::ImsRtpDataInfo& info) override {
        return report<IImsOrtcIndication, TRANSACTION_recvImsRtpData>(info);
    }
    ndk::ScopedAStatus notifyOrtcStatus(const binder::OrtcStatus& status) override {
        return report<IImsOrtcIndication, TRANSACTION_notifyOrtcStatus>(status);
    }
    ndk::ScopedAStatus notifyConnectInfo(const binder::OrtcConnectInfo& info) override {
        return report<IImsOrtcIndication, TRANSACTION_notifyConnectInfo>(info);
    }
    ndk::ScopedAStatus recvImsRtpRedunSignalMsgInd(const binder::ImsRtpRedunSignalMsg& msg) override {
        return report<IImsOrtcIndication, TRANSACTION_recvImsRtpRedunSignalMsgInd>(msg);
    }
    ndk::ScopedAStatus notifyImsRtpRedunDataLinkStateInd(const binder::ImsRtpRedunDataLinkStateInfo& info) override {
        return report<IImsOrtcIndication, TRANSACTION_notifyImsRtpRedunDataLinkStateInd>(info);
    }
};

}  // namespace subsysctl

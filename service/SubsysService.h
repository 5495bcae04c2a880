#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsys.h>
#include <mindroid/Handler.h>
#include <utils/DeathMonitor.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ImsOrtcService;
class ImsOrtcServiceIndication;
class ImsOrtcServiceResponse;
class RfSubsysService;
class SubsysServiceIndication;
class SubsysServiceResponse;
class SubsysServiceStateTracker;

// The binder object. The host makes one with ndk::SharedRefBase::make on a thread that has a looper, calls init,
// postInit and registerAsServer on it, and lets binder threads in after that. It lives as long as the process; one that
// ends before does so on that same thread.
//
//   SubsysService --sp--> SubsysServiceHandler --plain pointer--> SubsysService
//        |                        ^
//        +--sp--> DeathMonitor ---+ (message 0: the client died)
//
// Deliberate: every request succeeds as a call, whatever becomes of it. Clients learn the outcome by their callback.
class SubsysService : public BnSubsys {
public:
    static constexpr const char* TAG = "SubsysService";

    // Thread: looper.
    SubsysService();
    ~SubsysService() override;

    // In this order. Thread: looper.
    void init();
    void postInit();
    // 0, or -1 when the name could not be registered.
    [[nodiscard]] int32_t registerAsServer();

    // Writes what the library knows of itself to the file, in lines of "key: value". Takes no client's place and waits
    // for no thread. A host may override it and add what it knows. Thread: any.
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

    // A client came or went by another way than setCallback. Thread: any.
    void onHidlClientConnected();
    void onHidlClientDisconnected();
    // Forgets the client that is stored, alive or dead. The IMS ORTC clients are not touched. Thread: any.
    void serviceDied();
    void clearCallbacks();

    // All: binder.
    ndk::ScopedAStatus getSwtpStatus(int32_t serial) override;
    ndk::ScopedAStatus setCallback(const std::shared_ptr<ISubsysResponse>& response,
                                   const std::shared_ptr<ISubsysIndication>& indication) override;
    ndk::ScopedAStatus getLcdInfo(int32_t serial, int32_t type) override;
    ndk::ScopedAStatus setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk) override;
    ndk::ScopedAStatus setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk) override;
    ndk::ScopedAStatus getNvramData(int32_t serial, int32_t id, int32_t size) override;
    ndk::ScopedAStatus setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>& response,
                                          const std::shared_ptr<IImsOrtcIndication>& indication) override;
    ndk::ScopedAStatus setCallInfo(int32_t serial, const CallInfo& info) override;
    ndk::ScopedAStatus setOrtcRoomInfo(int32_t serial, const OrtcRoomInfo& info) override;
    ndk::ScopedAStatus sendImsRtpData(int32_t serial, const ImsRtpDataInfo& info) override;
    ndk::ScopedAStatus setImsRtpRemotePubIpAddr(int32_t serial, const ImsRtpPubIpAddrInfo& info) override;
    ndk::ScopedAStatus setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna,
                                         int32_t state) override;
    ndk::ScopedAStatus setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state) override;
    ndk::ScopedAStatus setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna,
                                               int32_t state) override;
    ndk::ScopedAStatus getIccState(int32_t serial) override;
    ndk::ScopedAStatus killProcess(int32_t serial, int32_t pid, const std::string& name) override;
    ndk::ScopedAStatus sendIccCmd(int32_t serial, const IccReqInfo& info) override;
    ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo& info,
                                      const std::shared_ptr<ISubsysIccMetaCallback>& callback) override;
    ndk::ScopedAStatus sendImsRtpRedunSignalMsg(int32_t serial, const ImsRtpRedunSignalMsg& msg) override;

private:
    class SubsysServiceHandler : public ::mindroid::Handler {
    public:
        explicit SubsysServiceHandler(SubsysService& service);
        void handleMessage(const ::mindroid::sp<::mindroid::Message>& message) override;
        virtual void onClientDeath(const ::mindroid::sp<::mindroid::Message>& message);
        // The service ends: a death that is still told reaches nobody. Thread: looper.
        void detach() { mService = nullptr; }

    private:
        SubsysService* mService;
    };

    void onClientDeath();
    // Forgets these callbacks where they are still the ones that are stored, and reports the client as gone.
    void cleanUp(const std::shared_ptr<ISubsysResponse>& response,
                 const std::shared_ptr<ISubsysIndication>& indication);
    void clearCallbacks(const std::shared_ptr<ISubsysResponse>& response,
                        const std::shared_ptr<ISubsysIndication>& indication);

    ::mindroid::sp<::subsys_utils::DeathMonitor> mDeathMonitor;
    ::mindroid::sp<SubsysServiceHandler> mHandler;
    ::mindroid::sp<RfSubsysService> mRfSubsysService;
    ::mindroid::sp<ImsOrtcService> mImsOrtcService;
    ::mindroid::sp<SubsysServiceResponse> mSubsysResponse;
    ::mindroid::sp<SubsysServiceIndication> mSubsysIndication;
    ::mindroid::sp<SubsysServiceStateTracker> mStateTracker;
    ::mindroid::sp<ImsOrtcServiceResponse> mImsOrtcResponse;
    ::mindroid::sp<ImsOrtcServiceIndication> mImsOrtcIndication;
    // In milliseconds of SystemClock.
    const uint64_t mStartTime;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys

#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccMetaReqInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccReqInfo.h>
#include <android/binder_auto_utils.h>
#include <mindroid/Handler.h>
#include <mindroid/Message.h>

#include <cstdint>
#include <memory>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// The RF half of ISubsys: hands each request to the RF component, the component's reply to the response channel and the
// component's ICC events to the indication channel. Replies, events and the connection run on this handler's looper.
//
// Requests: any. The status is always success. Without an RF component a request is logged and never answered.
class RfSubsysService : public ::mindroid::Handler {
public:
    static constexpr const char* TAG = "RfSubsysService";

    void handleMessage(const ::mindroid::sp<::mindroid::Message>& message) override;

    void init();
    void postInit();
    // A client came: connects to the RF component's events 200 ms later, once for each call. One that left changes
    // nothing. Thread: any.
    void setSubsysState(bool connected);
    // For the RF side, when the SWTP status changed. Thread: any.
    void sendSwtpStatusChanged(uint8_t status);

    ndk::ScopedAStatus getSwtpStatus(int32_t serial);
    // Answered here, from the device's LCD file. The type is not used.
    ndk::ScopedAStatus getLcdInfo(int32_t serial, int32_t type);
    ndk::ScopedAStatus setMipiFreqClk(int32_t serial, int32_t id, int64_t freqClk);
    ndk::ScopedAStatus setOscFreqClk(int32_t serial, int32_t id, int32_t freqClk);
    ndk::ScopedAStatus getNvramData(int32_t serial, int32_t id, int32_t size);
    ndk::ScopedAStatus setIccTuningState(int32_t serial, int32_t technology, int32_t band, int32_t antenna,
                                         int32_t state);
    ndk::ScopedAStatus setIccWifiAntState(int32_t serial, int32_t antenna, int32_t state);
    ndk::ScopedAStatus setIccSatelliteAntState(int32_t serial, int32_t technology, int32_t antenna, int32_t state);
    ndk::ScopedAStatus getIccState(int32_t serial);
    ndk::ScopedAStatus sendIccCmd(int32_t serial, const IccReqInfo& info);
    // The answer goes to the callback.
    ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo& info,
                                      const std::shared_ptr<ISubsysIccMetaCallback>& callback);

private:
    // A request whose reply carries an error alone.
    template <typename Operation, typename Response, typename... Args>
    ndk::ScopedAStatus requestVoid(const char* name, int32_t serial, Operation operation, Response response,
                                   Args... args);

    void onSubsysConnected();
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys

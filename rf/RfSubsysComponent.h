#pragma once

#include "component/SubsysComponent.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace hal {

class IccProxy;

// Serves the RF requests. Decides once for the process whether there is an ICC module at all; if so it owns the ICC
// proxy, initialises the ICC plugin with what the VsComponent tells, and turns the notifications of that component into
// commands of the proxy.
//
// The register operations and the requests: any, from the end of init on. They only hand work to the proxy.
class RfSubsysComponent : public SubsysComponent {
public:
    static constexpr const char* TAG = "RfSubsysComponent";
    static constexpr int32_t TYPE = 20;
    // The VsComponent reports its readiness; obj is an Integer.
    static constexpr int32_t MSG_VS_COMPONENT_STATE = 0;
    static constexpr int32_t MSG_GET_RF_ICC_INFO = 1;

    RfSubsysComponent();
    ~RfSubsysComponent() override;

    // Thread: looper.
    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;
    // Only instance 0 has work to do. Thread: looper.
    void init(int32_t phase) override;
    // Wires the notifications and starts asking for the RF ICC information; once in a process. Thread: looper.
    virtual void onVsComponentReady();

    // Requests. Each answers its reply message.
    // Deliberate: those that are virtual answer error 1 at once. They complete the interface for its clients.
    virtual void getSwtpStatus(const mindroid::sp<mindroid::Message>& reply);
    virtual void setMipiFreqClk(int32_t id, uint64_t freqClk, const mindroid::sp<mindroid::Message>& reply);
    virtual void setOscFreqClk(int32_t id, int32_t freqClk, const mindroid::sp<mindroid::Message>& reply);
    virtual void getMipiClk(int32_t id, const mindroid::sp<mindroid::Message>& reply);
    virtual void getOscClk(int32_t id, std::vector<uint32_t>* clocks, const mindroid::sp<mindroid::Message>& reply);
    virtual void getNvramData(int32_t id, int32_t size, const mindroid::sp<mindroid::Message>& reply);
    virtual void setIccTuningState(int32_t technology, int32_t band, int32_t antenna, int32_t state,
                                   const mindroid::sp<mindroid::Message>& reply);
    // See the IccProxy operations of the same names. Error 1 where there is no ICC module.
    void setIccWifiAntState(int32_t antenna, int32_t state, const mindroid::sp<mindroid::Message>& reply);
    void setIccSatelliteAntState(int32_t technology, int32_t antenna, int32_t state,
                                 const mindroid::sp<mindroid::Message>& reply);
    void getIccState(const mindroid::sp<mindroid::Message>& reply);
    void sendIccCmd(int32_t reqId, std::vector<uint8_t> data, int32_t timeoutMs,
                    const mindroid::sp<mindroid::Message>& reply);

    // See the IccProxy operations of the same names. Nothing happens where there is no ICC module.
    Registration registerIccStateInd;
    Registration registerIccClatInfoInd;
    Registration registerIccDeviceErrInd;
    Registration registerIccPercChangeInd;
    Registration registerIccInfoChangedInd;

    // What the property "persist.vendor.nuvex.icc.module.enable" said when it was first asked for. Thread: any.
    [[nodiscard]] static bool isIccSupported();

private:
    // Asks the VsComponent, and asks again in 50 ms until an answer came; defaults stand in after five tries.
    void getRfIccInfo();
    void onRfIccInfo(const mindroid::Message& reply);
    void iccApisInit(uint8_t version, uint8_t brindle);

    // A callback that runs the operation with the carrier that a notification brings, see VsRecords.h.
    mindroid::sp<mindroid::MessageCallback> onNotification(
        void (RfSubsysComponent::*operation)(const mindroid::Object&));
    void onClatState(const mindroid::Object& carrier);
    void onTxSharingState(const mindroid::Object& carrier);
    void onScreenState(const mindroid::Object& carrier);
    void onIccEvent(const mindroid::Object& carrier);

    template <typename Operation, typename... Args>
    void request(const mindroid::sp<mindroid::Message>& reply, Operation operation, Args&&... args);

    // Empty where there is no ICC module.
    mindroid::sp<IccProxy> mIccProxy;
};

// The component of this process, or null. Thread: any.
[[nodiscard]] mindroid::sp<RfSubsysComponent> getRfSubsysComponent();

}  // namespace hal

#pragma once

#include "ims/ImsOrtcComponent.h"
#include "simulator/ComponentPlayer.h"

#include <mindroid/RegistrantList.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace simulator {

// The IMS ORTC media path, as the scenario wants it: it keeps one call and its room and plays the far end. Thread: any.
class SimImsOrtcComponent final : public hal::ImsOrtcComponent {
public:
    using Target = const mindroid::sp<mindroid::Handler>&;
    using Callback = const mindroid::sp<mindroid::MessageCallback>&;
    using Extra = const mindroid::sp<mindroid::Object>&;
    using Reply = const mindroid::sp<mindroid::Message>&;

    SimImsOrtcComponent();

    // The scenario starts here. Thread: looper.
    void init(int32_t instanceId) override;

    void registerLocalPubIpAddrChangedInd(Target handler, Callback callback, Extra obj) override {
        listen(ADDRESS, handler, callback, obj);
    }
    void registerRecvImsRtpDataInd(Target handler, Callback callback, Extra obj) override {
        listen(RTP, handler, callback, obj);
    }
    void registerNotifyOrtcStatusInd(Target handler, Callback callback, Extra obj) override {
        listen(STATUS, handler, callback, obj);
    }
    void registerNotifyConnectInfoInd(Target handler, Callback callback, Extra obj) override {
        listen(CONNECT, handler, callback, obj);
    }
    void registerRecvImsRtpRedunSignalMsgInd(Target handler, Callback callback, Extra obj) override {
        listen(SIGNAL, handler, callback, obj);
    }
    void registerNotifyImsRtpRedunDataLinkStateInd(Target handler, Callback callback, Extra obj) override {
        listen(LINK, handler, callback, obj);
    }

    void setCallInfo(const hal::CallInfoType& info, Reply reply) override;
    void setOrtcRoomInfo(const hal::OrtcRoomInfoType& info, Reply reply) override;
    void sendImsRtpData(const hal::ImsRtpDataInfoType& info, Reply reply) override;
    void setImsRtpRemotePubIpAddr(const hal::ImsRtpPubIpAddrInfoType& info, Reply reply) override;
    void sendImsRtpRedunSignalMsg(const hal::ImsRtpRedunSignalMsgType& msg, Reply reply) override;

private:
    enum Event : size_t { ADDRESS, RTP, STATUS, CONNECT, SIGNAL, LINK, EVENT_COUNT };

    void listen(Event event, Target handler, Callback callback, Extra obj);
    void deliver(const ScenarioEvent& event);
    [[nodiscard]] mindroid::sp<mindroid::Object> makeCarrier(const ScenarioEvent& event) const;
    template <typename T>
    void report(Event event, const T& record);

    // What the device knows, as the records that report it.
    [[nodiscard]] hal::OrtcStatusType status() const;
    [[nodiscard]] hal::OrtcConnectInfoType connectInfo() const;
    [[nodiscard]] hal::ImsRtpRedunDataLinkStateInfoType linkState() const;

    std::array<mindroid::sp<mindroid::RegistrantList>, EVENT_COUNT> mListeners;
    // Thread: looper.
    hal::CallInfoType mCall{};
    hal::OrtcRoomInfoType mRoom{};
    ComponentPlayer mPlayer;
};

}  // namespace simulator

#include "simulator/SimImsOrtcComponent.h"

#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"

#include <cstdio>
#include <cstring>
#include <iterator>

using hal::CallInfoType;
using hal::ImsRtpDataInfoType;
using hal::ImsRtpPubIpAddrInfoType;
using hal::ImsRtpRedunDataLinkStateInfoType;
using hal::ImsRtpRedunSignalMsgRspInfoType;
using hal::ImsRtpRedunSignalMsgType;
using hal::OrtcConnectInfoType;
using hal::OrtcRoomInfoType;
using hal::OrtcStatusType;
using mindroid::Object;
using mindroid::RegistrantList;
using mindroid::sp;

namespace simulator {

namespace {

enum Request : size_t { SET_CALL, SET_ROOM, SEND_RTP, SET_ADDRESS, SEND_SIGNAL };

constexpr Field SIGNAL_ANSWER_FIELDS[] = {
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgRspInfoType, rspField1),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgRspInfoType, rspField2),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgRspInfoType, rspField3),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgRspInfoType, rspField4),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgRspInfoType, rspField5),
};
constexpr unsigned ANY = DELAY | SILENT | TWICE | NULL_OBJECT;
constexpr RequestKind REQUESTS[] = {
    {"setCallInfo", ANY, 4},
    {"setOrtcRoomInfo", ANY, 4},
    {"sendImsRtpData", ANY, 4},
    {"setImsRtpRemotePubIpAddr", ANY, 4},
    {"sendImsRtpRedunSignalMsg", ANY, 4, SIGNAL_ANSWER_FIELDS},
};

constexpr Field ADDRESS_FIELDS[] = {
    SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, slotId),    SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, callId),
    SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, mediaType), SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, addrFamily),
    SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, rtpPort),   SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, rtcpPort),
    SIMULATOR_FIELD(ImsRtpPubIpAddrInfoType, ipAddr),
};
constexpr Field RTP_FIELDS[] = {
    SIMULATOR_FIELD(ImsRtpDataInfoType, slotId),   SIMULATOR_FIELD(ImsRtpDataInfoType, callId),
    SIMULATOR_FIELD(ImsRtpDataInfoType, dataType), SIMULATOR_HEX_FIELD(ImsRtpDataInfoType, data),
    SIMULATOR_FIELD(ImsRtpDataInfoType, dataLen),
};
constexpr Field STATUS_FIELDS[] = {
    SIMULATOR_FIELD(OrtcStatusType, slotId), SIMULATOR_FIELD(OrtcStatusType, callId),
    SIMULATOR_FIELD(OrtcStatusType, roomId), SIMULATOR_FIELD(OrtcStatusType, reason),
    SIMULATOR_FIELD(OrtcStatusType, status),
};
constexpr Field CONNECT_FIELDS[] = {
    SIMULATOR_FIELD(OrtcConnectInfoType, slotId),      SIMULATOR_FIELD(OrtcConnectInfoType, callId),
    SIMULATOR_FIELD(OrtcConnectInfoType, roomId),      SIMULATOR_FIELD(OrtcConnectInfoType, connectState),
    SIMULATOR_FIELD(OrtcConnectInfoType, connectInfo),
};
constexpr Field SIGNAL_FIELDS[] = {
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msgField1), SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msgField2),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msgField3), SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msgField4),
    SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msgField5), SIMULATOR_FIELD(ImsRtpRedunSignalMsgType, msg),
};
constexpr Field LINK_FIELDS[] = {
    SIMULATOR_FIELD(ImsRtpRedunDataLinkStateInfoType, linkField1),
    SIMULATOR_FIELD(ImsRtpRedunDataLinkStateInfoType, linkField2),
    SIMULATOR_FIELD(ImsRtpRedunDataLinkStateInfoType, linkField3),
    SIMULATOR_FIELD(ImsRtpRedunDataLinkStateInfoType, linkField4),
    SIMULATOR_FIELD(ImsRtpRedunDataLinkStateInfoType, linkField5),
};
// In the order of SimImsOrtcComponent::Event.
constexpr EventKind EVENTS[] = {
    {"address", sizeof(ImsRtpPubIpAddrInfoType), ADDRESS_FIELDS},
    {"rtp", sizeof(ImsRtpDataInfoType), RTP_FIELDS},
    {"status", sizeof(OrtcStatusType), STATUS_FIELDS},
    {"connect", sizeof(OrtcConnectInfoType), CONNECT_FIELDS},
    {"signal", sizeof(ImsRtpRedunSignalMsgType), SIGNAL_FIELDS},
    {"link", sizeof(ImsRtpRedunDataLinkStateInfoType), LINK_FIELDS},
};
constexpr Vocabulary VOCABULARY = {"ims", REQUESTS, EVENTS, false};

template <typename T>
sp<Object> carrierOf(const T& record) {
    return new hal::SubsysInterfaceData<T>(record);
}

// The address by which the device says that it is reached: one of those kept for documents, of the remote one's family.
ImsRtpPubIpAddrInfoType localAddressFor(const ImsRtpPubIpAddrInfoType& remote) {
    ImsRtpPubIpAddrInfoType local = remote;
    const bool isIpv6 = std::memchr(remote.ipAddr, ':', sizeof(remote.ipAddr)) != nullptr;
    std::memset(local.ipAddr, 0, sizeof(local.ipAddr));  // nothing of the remote one behind the text
    std::snprintf(local.ipAddr, sizeof(local.ipAddr), "%s", isIpv6 ? "2001:db8::1" : "192.0.2.1");
    return local;
}

ImsRtpRedunSignalMsgRspInfoType signalAnswerFor(const ImsRtpRedunSignalMsgType& msg) {
    return {msg.msgField1, msg.msgField2, msg.msgField3, 0, msg.msgField4, msg.msgField5};
}

// Whoever loads this library adds the component by that, on a thread that has a looper.
[[maybe_unused]] const bool sIsAdded = [] {
    hal::ComponentManager::getInstance()->add(new SimImsOrtcComponent());
    return true;
}();

}  // namespace

SimImsOrtcComponent::SimImsOrtcComponent()
    : mPlayer("SimImsOrtcComponent", VOCABULARY, *this, [this](const ScenarioEvent& event) { deliver(event); }) {
    static_assert(std::size(EVENTS) == EVENT_COUNT);
    for (auto& listeners : mListeners) listeners = new RegistrantList();
}

void SimImsOrtcComponent::init(int32_t instanceId) {
    ImsOrtcComponent::init(instanceId);
    mPlayer.start();
}

void SimImsOrtcComponent::setCallInfo(const CallInfoType& info, Reply reply) {
    mPlayer.serve(SET_CALL, reply, [this, info] {
        mCall = info;
        report(STATUS, status());
    });
}

void SimImsOrtcComponent::setOrtcRoomInfo(const OrtcRoomInfoType& info, Reply reply) {
    mPlayer.serve(SET_ROOM, reply, [this, info] {
        mRoom = info;
        report(CONNECT, connectInfo());
        report(LINK, linkState());
    });
}

void SimImsOrtcComponent::sendImsRtpData(const ImsRtpDataInfoType& info, Reply reply) {
    mPlayer.serve(SEND_RTP, reply, [this, info] { report(RTP, info); });
}

void SimImsOrtcComponent::setImsRtpRemotePubIpAddr(const ImsRtpPubIpAddrInfoType& info, Reply reply) {
    mPlayer.serve(SET_ADDRESS, reply, [this, info] { report(ADDRESS, localAddressFor(info)); });
}

void SimImsOrtcComponent::sendImsRtpRedunSignalMsg(const ImsRtpRedunSignalMsgType& msg, Reply reply) {
    mPlayer.serve(
        SEND_SIGNAL, reply, [this, msg] { report(SIGNAL, msg); },
        [msg](const ScenarioAnswer& answer) { return carrierOf(withFields(signalAnswerFor(msg), answer.fields)); });
}

void SimImsOrtcComponent::listen(Event event, Target handler, Callback callback, Extra obj) {
    ComponentPlayer::listen(mListeners[event], handler, callback, obj);
}

void SimImsOrtcComponent::deliver(const ScenarioEvent& event) {
    mListeners[event.kind]->notify(event.null ? nullptr : makeCarrier(event));
}

sp<Object> SimImsOrtcComponent::makeCarrier(const ScenarioEvent& event) const {
    switch (event.kind) {
        case ADDRESS:
            return carrierOf(withFields(ImsRtpPubIpAddrInfoType{}, event.fields));
        case RTP:
            return carrierOf(withFields(ImsRtpDataInfoType{}, event.fields));
        case STATUS:
            return carrierOf(withFields(status(), event.fields));
        case CONNECT:
            return carrierOf(withFields(connectInfo(), event.fields));
        case SIGNAL:
            return carrierOf(withFields(ImsRtpRedunSignalMsgType{}, event.fields));
        default:
            return carrierOf(withFields(linkState(), event.fields));
    }
}

template <typename T>
void SimImsOrtcComponent::report(Event event, const T& record) {
    mListeners[event]->notify(carrierOf(record));
}

OrtcStatusType SimImsOrtcComponent::status() const {
    return {mCall.slotId, mCall.callId, mRoom.roomId, 0, mCall.callState};
}

OrtcConnectInfoType SimImsOrtcComponent::connectInfo() const {
    OrtcConnectInfoType info{mRoom.slotId, mRoom.callId, mRoom.roomId, mRoom.action, {}};
    std::snprintf(info.connectInfo, sizeof(info.connectInfo), "room %d", mRoom.roomId);
    return info;
}

ImsRtpRedunDataLinkStateInfoType SimImsOrtcComponent::linkState() const {
    const auto low = [](int32_t value) { return static_cast<uint8_t>(value); };
    return {low(mRoom.slotId), low(mRoom.callId), low(mRoom.roomId), low(mRoom.roomState), low(mRoom.action)};
}

}  // namespace simulator

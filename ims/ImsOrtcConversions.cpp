#include "ims/ImsOrtcConversions.h"

#include "ims/ImsOrtcService.h"

#include <mindroid/Log.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace hal {
namespace {

constexpr const char* TAG = interface::ImsOrtcService::TAG;

// A payload that fills the record is refused as well.
constexpr size_t MAX_REQUEST_DATA = sizeof(ImsRtpDataInfoType::data) - 1;

// Fills the whole field.
template <typename Unit, size_t N>
void fill(Unit (&field)[N], const Unit* units, size_t count) {
    std::fill(std::copy_n(units, count, field), std::end(field), Unit{});
}

template <size_t N>
void copyText(char (&field)[N], const std::string& text) {
    // Deliberate: not truncated. The component tells "none" from half an address or a cut message.
    fill(field, text.data(), text.size() < N ? text.size() : 0);
}

template <size_t N>
void readText(const char (&field)[N], std::string& text) {
    text.assign(field, strnlen(field, N));
}

int32_t bytesPresent(int32_t dataLen) {
    constexpr int32_t capacity = sizeof(ImsRtpDataInfoType::data);
    const int32_t present = std::clamp(dataLen, 0, capacity);
    if (present != dataLen) mindroid::Log::e(TAG, "received dataLen %d, data of %d bytes", dataLen, present);
    return present;
}

}  // namespace

CallInfoType packCallInfo(const interface::CallInfo& info) {
    CallInfoType record;
    record.slotId = info.slotId;
    record.callId = info.callId;
    record.callType = info.callType;
    record.callState = info.callState;
    copyText(record.text1, info.text1);
    copyText(record.text2, info.text2);
    copyText(record.text3, info.text3);
    copyText(record.text4, info.text4);
    copyText(record.text5, info.text5);
    copyText(record.text6, info.text6);
    record.value64 = info.value64;
    record.value32 = info.value32;
    return record;
}

OrtcRoomInfoType packOrtcRoomInfo(const interface::OrtcRoomInfo& info) {
    return {info.slotId, info.callId, info.roomId, info.roomState, info.action};
}

ImsRtpDataInfoType packImsRtpDataInfo(const interface::ImsRtpDataInfo& info) {
    ImsRtpDataInfoType record;
    if (info.data.size() > MAX_REQUEST_DATA) {
        // Deliberate: all or nothing. The component takes a record of zeros for a payload that did not fit.
        std::memset(&record, 0, sizeof record);
        return record;
    }
    record.slotId = info.slotId;
    record.callId = info.callId;
    record.dataType = info.dataType;
    fill(record.data, info.data.data(), info.data.size());
    record.dataLen = info.dataLen;
    return record;
}

ImsRtpPubIpAddrInfoType packImsRtpPubIpAddrInfo(const interface::ImsRtpPubIpAddrInfo& info) {
    ImsRtpPubIpAddrInfoType record;
    record.slotId = info.slotId;
    record.callId = info.callId;
    record.mediaType = info.mediaType;
    record.addrFamily = info.addrFamily;
    record.rtpPort = info.rtpPort;
    record.rtcpPort = info.rtcpPort;
    copyText(record.ipAddr, info.ipAddr);
    return record;
}

ImsRtpRedunSignalMsgType packImsRtpRedunSignalMsg(const interface::ImsRtpRedunSignalMsg& msg) {
    ImsRtpRedunSignalMsgType record;
    record.msgField1 = static_cast<uint8_t>(msg.msgField1);
    record.msgField2 = static_cast<uint8_t>(msg.msgField2);
    record.msgField3 = static_cast<uint8_t>(msg.msgField3);
    record.zero = 0;
    record.msgField4 = static_cast<uint16_t>(msg.msgField4);
    record.msgField5 = static_cast<uint16_t>(msg.msgField5);
    copyText(record.msg, msg.msg);
    return record;
}

void unpackImsRtpPubIpAddrInfo(const ImsRtpPubIpAddrInfoType& record, interface::ImsRtpPubIpAddrInfo& info) {
    info.slotId = record.slotId;
    info.callId = record.callId;
    info.mediaType = record.mediaType;
    info.addrFamily = record.addrFamily;
    info.rtpPort = record.rtpPort;
    info.rtcpPort = record.rtcpPort;
    readText(record.ipAddr, info.ipAddr);
}

void unpackImsRtpDataInfo(const ImsRtpDataInfoType& record, interface::ImsRtpDataInfo& info) {
    info.slotId = record.slotId;
    info.callId = record.callId;
    info.dataType = record.dataType;
    info.data.assign(record.data, record.data + bytesPresent(record.dataLen));
    info.dataLen = record.dataLen;
}

void unpackOrtcStatus(const OrtcStatusType& record, interface::OrtcStatus& status) {
    status.slotId = record.slotId;
    status.callId = record.callId;
    status.roomId = record.roomId;
    status.reason = record.reason;
    status.status = record.status;
}

void unpackOrtcConnectInfo(const OrtcConnectInfoType& record, interface::OrtcConnectInfo& info) {
    info.slotId = record.slotId;
    info.callId = record.callId;
    info.roomId = record.roomId;
    info.connectState = record.connectState;
    readText(record.connectInfo, info.connectInfo);
}

void unpackImsRtpRedunSignalMsg(const ImsRtpRedunSignalMsgType& record, interface::ImsRtpRedunSignalMsg& msg) {
    msg.msgField1 = record.msgField1;
    msg.msgField2 = record.msgField2;
    msg.msgField3 = record.msgField3;
    msg.msgField4 = record.msgField4;
    msg.msgField5 = record.msgField5;
    readText(record.msg, msg.msg);
}

void unpackImsRtpRedunDataLinkStateInfo(const ImsRtpRedunDataLinkStateInfoType& record,
                                        interface::ImsRtpRedunDataLinkStateInfo& info) {
    info.linkField1 = record.linkField1;
    info.linkField2 = record.linkField2;
    info.linkField3 = record.linkField3;
    info.linkField4 = record.linkField4;
    info.linkField5 = record.linkField5;
}

void unpackImsRtpRedunSignalMsgRspInfo(const ImsRtpRedunSignalMsgRspInfoType& record,
                                       interface::ImsRtpRedunSignalMsgRspInfo& info) {
    info.rspField1 = record.rspField1;
    info.rspField2 = record.rspField2;
    info.rspField3 = record.rspField3;
    info.rspField4 = record.rspField4;
    info.rspField5 = record.rspField5;
}

}  // namespace hal

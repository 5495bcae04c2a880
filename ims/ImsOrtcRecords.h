#pragma once

#include <cstdint>

// The records that travel between this library and the IMS ORTC component, which another library supplies. Their bytes
// are the contract between the two: little-endian, no padding but the bytes named here.
//
// Requests are handed to the component by reference. Its events and its answer to a signalling message reach this
// library as carriers: the message's `obj` is an object derived from mindroid::Object alone, whose first data member is
// the record. hal::SubsysInterfaceData<T> (component/SubsysInterfaceData.h) is such a class; use it where you can. The
// object is known by the event that carries it, never by its class, so a box or a carrier of another record is a fault
// that nobody detects, and may be read beyond its end.
//
// Text is NUL-terminated and the rest of its field is zero. Text that does not fit (its length is not below the size of
// the field) arrives empty. In a carrier it ends at its first NUL or at the end of its field.
namespace hal {

// Its 8-byte value stands on a multiple of 8 while the size is none: the record is aligned to 4, so value64 is read and
// written by value, never through a pointer or a reference.
#pragma pack(push, 4)
struct CallInfoType {
    int32_t slotId;
    int32_t callId;
    int32_t callType;
    int32_t callState;
    char text1[32];
    char text2[32];
    char text3[256];
    char text4[64];
    char text5[256];
    char text6[256];
    int64_t value64;
    int32_t value32;
};
#pragma pack(pop)
static_assert(sizeof(CallInfoType) == 924);

struct OrtcRoomInfoType {
    int32_t slotId;
    int32_t callId;
    int32_t roomId;
    int32_t roomState;
    int32_t action;
};
static_assert(sizeof(OrtcRoomInfoType) == 20);

// One RTP payload, both directions. A request with more than 255 bytes of data arrives as a record of zeros.
// dataLen is the client's own figure: it may be anything, also negative or above the size of data. In a carrier, a
// length outside 0..256 is cut to that range when data is read, and handed on as it is.
struct ImsRtpDataInfoType {
    int32_t slotId;
    int32_t callId;
    int32_t dataType;
    uint8_t data[256];
    int32_t dataLen;
};
static_assert(sizeof(ImsRtpDataInfoType) == 272);

// The remote address in a request, the local one in an event.
struct ImsRtpPubIpAddrInfoType {
    int32_t slotId;
    int32_t callId;
    int32_t mediaType;
    int32_t addrFamily;
    int32_t rtpPort;
    int32_t rtcpPort;
    char ipAddr[64];
};
static_assert(sizeof(ImsRtpPubIpAddrInfoType) == 88);

// A redundancy signalling message, both directions. A request keeps the low 8 or 16 bits of the client's integers.
struct ImsRtpRedunSignalMsgType {
    uint8_t msgField1;
    uint8_t msgField2;
    uint8_t msgField3;
    uint8_t zero;
    uint16_t msgField4;
    uint16_t msgField5;
    char msg[250];
};
static_assert(sizeof(ImsRtpRedunSignalMsgType) == 258);

// The answer to a signalling message; read only where the error is 0.
struct ImsRtpRedunSignalMsgRspInfoType {
    uint8_t rspField1;
    uint8_t rspField2;
    uint8_t rspField3;
    uint8_t zero;
    int32_t rspField4;
    int32_t rspField5;
};
static_assert(sizeof(ImsRtpRedunSignalMsgRspInfoType) == 12);

struct OrtcStatusType {
    int32_t slotId;
    int32_t callId;
    int32_t roomId;
    int32_t reason;
    int32_t status;
};
static_assert(sizeof(OrtcStatusType) == 20);

struct OrtcConnectInfoType {
    int32_t slotId;
    int32_t callId;
    int32_t roomId;
    int32_t connectState;
    char connectInfo[256];
};
static_assert(sizeof(OrtcConnectInfoType) == 272);

struct ImsRtpRedunDataLinkStateInfoType {
    uint8_t linkField1;
    uint8_t linkField2;
    uint8_t linkField3;
    uint8_t linkField4;
    uint8_t linkField5;
};
static_assert(sizeof(ImsRtpRedunDataLinkStateInfoType) == 5);

// Known to the component alone; this library passes neither.
struct ImsRtpRedunPublicKeyInfoType;
struct ImsRtpRedunDataPathConfigInfoType;

}  // namespace hal

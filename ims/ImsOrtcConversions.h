#pragma once

#include "component/Interface.h"
#include "ims/ImsOrtcRecords.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/CallInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpDataInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpPubIpAddrInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunDataLinkStateInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsg.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsgRspInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcConnectInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcRoomInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcStatus.h>

// Between the records of the binder interface and those of the component. Safe on any input. Thread: any.
namespace hal {

// Text is copied byte for byte, embedded NULs too, where it is strictly shorter than its field; a longer one is not
// truncated: its field stays empty and the other fields are filled all the same.
[[nodiscard]] CallInfoType packCallInfo(const interface::CallInfo& info);
[[nodiscard]] OrtcRoomInfoType packOrtcRoomInfo(const interface::OrtcRoomInfo& info);
// More than 255 bytes of data give a record of zeros, integers included. dataLen is the client's, whatever data holds.
[[nodiscard]] ImsRtpDataInfoType packImsRtpDataInfo(const interface::ImsRtpDataInfo& info);
[[nodiscard]] ImsRtpPubIpAddrInfoType packImsRtpPubIpAddrInfo(const interface::ImsRtpPubIpAddrInfo& info);
// The integers are narrowed to 8 and 16 bits.
[[nodiscard]] ImsRtpRedunSignalMsgType packImsRtpRedunSignalMsg(const interface::ImsRtpRedunSignalMsg& msg);

// Each fills the whole interface record. Text ends at its first NUL or at the end of its field.
void unpackImsRtpPubIpAddrInfo(const ImsRtpPubIpAddrInfoType& record, interface::ImsRtpPubIpAddrInfo& info);
// A dataLen outside 0..256 is logged and handed on; the bytes copied are those that the record has.
void unpackImsRtpDataInfo(const ImsRtpDataInfoType& record, interface::ImsRtpDataInfo& info);
void unpackOrtcStatus(const OrtcStatusType& record, interface::OrtcStatus& status);
void unpackOrtcConnectInfo(const OrtcConnectInfoType& record, interface::OrtcConnectInfo& info);
void unpackImsRtpRedunSignalMsg(const ImsRtpRedunSignalMsgType& record, interface::ImsRtpRedunSignalMsg& msg);
void unpackImsRtpRedunDataLinkStateInfo(const ImsRtpRedunDataLinkStateInfoType& record,
                                        interface::ImsRtpRedunDataLinkStateInfo& info);
void unpackImsRtpRedunSignalMsgRspInfo(const ImsRtpRedunSignalMsgRspInfoType& record,
                                       interface::ImsRtpRedunSignalMsgRspInfo& info);

}  // namespace hal

package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunSignalMsgRspInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.SubsysResponseInfo;

/**
 * Answers to the IMS ORTC requests. Each goes to both registered clients.
 */
@VintfStability
oneway interface IImsOrtcResponse {
    void setCallInfoResponse(in SubsysResponseInfo info);
    void setOrtcRoomInfoResponse(in SubsysResponseInfo info);
    void sendImsRtpDataResponse(in SubsysResponseInfo info);
    void setImsRtpRemotePubIpAddrResponse(in SubsysResponseInfo info);
    void sendImsRtpRedunSignalMsgResponse(in SubsysResponseInfo info, in ImsRtpRedunSignalMsgRspInfo rspInfo);
}

package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpDataInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpPubIpAddrInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunDataLinkStateInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunSignalMsg;
import vendor.nuvex.hardware.subsys_interface.subsys.OrtcConnectInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.OrtcStatus;

/**
 * Events of the IMS ORTC media path. Each goes to both registered clients.
 */
@VintfStability
oneway interface IImsOrtcIndication {
    void LocalPubIpAddrChanged(in ImsRtpPubIpAddrInfo info);
    void recvImsRtpData(in ImsRtpDataInfo info);
    void notifyOrtcStatus(in OrtcStatus status);
    void notifyConnectInfo(in OrtcConnectInfo info);
    void recvImsRtpRedunSignalMsgInd(in ImsRtpRedunSignalMsg msg);
    void notifyImsRtpRedunDataLinkStateInd(in ImsRtpRedunDataLinkStateInfo info);
}

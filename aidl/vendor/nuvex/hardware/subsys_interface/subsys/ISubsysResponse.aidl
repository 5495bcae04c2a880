package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.IccRespInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.IccStateInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.SubsysResponseInfo;

/**
 * Answers to the RF requests and to killProcess; info.serial tells which request is answered.
 */
@VintfStability
oneway interface ISubsysResponse {
    void getSwtpStatusResponse(in SubsysResponseInfo info, in byte status);
    void getLcdInfoResponse(in SubsysResponseInfo info, in String lcdInfo);
    void setMipiFreqClkResponse(in SubsysResponseInfo info);
    void setOscFreqClkResponse(in SubsysResponseInfo info);
    /** The NVRAM bytes travel as a string of the same length. */
    void getNvramDataResponse(in SubsysResponseInfo info, in String data);
    void setIccTuningStateResponse(in SubsysResponseInfo info);
    void setIccWifiAntStateResponse(in SubsysResponseInfo info);
    void setIccSatelliteAntStateResponse(in SubsysResponseInfo info);
    void getIccStateResponse(in SubsysResponseInfo info, in IccStateInfo state);
    void killProcessResponse(in SubsysResponseInfo info);
    void sendIccCmdResponse(in SubsysResponseInfo info, in IccRespInfo respInfo);
}

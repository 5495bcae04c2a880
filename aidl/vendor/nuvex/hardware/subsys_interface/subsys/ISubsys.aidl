package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.CallInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.IImsOrtcIndication;
import vendor.nuvex.hardware.subsys_interface.subsys.IImsOrtcResponse;
import vendor.nuvex.hardware.subsys_interface.subsys.ISubsysIccMetaCallback;
import vendor.nuvex.hardware.subsys_interface.subsys.ISubsysIndication;
import vendor.nuvex.hardware.subsys_interface.subsys.ISubsysResponse;
import vendor.nuvex.hardware.subsys_interface.subsys.IccMetaReqInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.IccReqInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpDataInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpPubIpAddrInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.ImsRtpRedunSignalMsg;
import vendor.nuvex.hardware.subsys_interface.subsys.OrtcRoomInfo;

/**
 * The RF subsystem and the IMS ORTC media path of the device.
 * Every request succeeds at once as a call; its outcome comes to the response callback with the same serial.
 */
@VintfStability
interface ISubsys {
    /** SWTP status. */
    void getSwtpStatus(in int serial);
    /** Replaces the RF client. A null callback clears the one it stands for. */
    void setCallback(in ISubsysResponse response, in ISubsysIndication indication);
    /** LCD panel information. The type is not used. */
    void getLcdInfo(in int serial, in int type);
    /** Sets a MIPI clock. */
    void setMipiFreqClk(in int serial, in int id, in long freqClk);
    /** Sets an oscillator clock. */
    void setOscFreqClk(in int serial, in int id, in int freqClk);
    /** Reads RF NVRAM. */
    void getNvramData(in int serial, in int id, in int size);
    /** Adds an IMS ORTC client; two at most, a further one is ignored. */
    void setImsOrtcCallback(in IImsOrtcResponse response, in IImsOrtcIndication indication);
    /** Describes a call. */
    void setCallInfo(in int serial, in CallInfo info);
    /** Describes the room of a call. */
    void setOrtcRoomInfo(in int serial, in OrtcRoomInfo info);
    /** Sends one RTP payload. */
    void sendImsRtpData(in int serial, in ImsRtpDataInfo info);
    /** Sets the remote public address. */
    void setImsRtpRemotePubIpAddr(in int serial, in ImsRtpPubIpAddrInfo info);
    /** Tunes an antenna. */
    void setIccTuningState(in int serial, in int technology, in int band, in int antenna, in int state);
    /** Sets the Wi-Fi antenna state. */
    void setIccWifiAntState(in int serial, in int antenna, in int state);
    /** Sets the satellite antenna state. */
    void setIccSatelliteAntState(in int serial, in int technology, in int antenna, in int state);
    /** State of the ICC controller. */
    void getIccState(in int serial);
    /** Kills a process whose name is on the service's own list; the client vouches that the pid is that process. */
    void killProcess(in int serial, in int pid, in String name);
    /** Sends a command to the ICC controller. */
    void sendIccCmd(in int serial, in IccReqInfo info);
    /** Sends a command to the ICC controller. The answer goes to the callback alone. */
    void sendIccMetaCmd(in IccMetaReqInfo info, in ISubsysIccMetaCallback callback);
    /** Sends a redundancy signalling message. */
    void sendImsRtpRedunSignalMsg(in int serial, in ImsRtpRedunSignalMsg msg);
}

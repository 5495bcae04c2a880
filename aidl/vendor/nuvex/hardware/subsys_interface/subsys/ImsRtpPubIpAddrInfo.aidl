package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * A public address of the media path.
 */
@VintfStability
parcelable ImsRtpPubIpAddrInfo {
    int slotId;
    int callId;
    int mediaType;
    int addrFamily;
    int rtpPort;
    int rtcpPort;
    /** At most 63 bytes; a longer one arrives empty. */
    String ipAddr;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * One RTP payload.
 */
@VintfStability
parcelable ImsRtpDataInfo {
    int slotId;
    int callId;
    int dataType;
    /** At most 255 bytes; with more, the component receives a record of zeros. */
    byte[] data;
    /** The number of valid bytes of data; not compared with the size of data. */
    int dataLen;
}

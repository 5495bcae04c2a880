package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * A redundancy signalling message.
 */
@VintfStability
parcelable ImsRtpRedunSignalMsg {
    /** The component receives the low 8 bits of the first three fields and the low 16 bits of the next two. */
    int msgField1;
    int msgField2;
    int msgField3;
    int msgField4;
    int msgField5;
    /** At most 249 bytes; a longer one arrives empty. */
    String msg;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * A call of the ORTC media path. A text that does not fit its limit (31, 31, 255, 63, 255, 255 bytes) arrives empty.
 */
@VintfStability
parcelable CallInfo {
    int slotId;
    int callId;
    int callType;
    int callState;
    String text1;
    String text2;
    String text3;
    String text4;
    String text5;
    String text6;
    long value64;
    int value32;
}

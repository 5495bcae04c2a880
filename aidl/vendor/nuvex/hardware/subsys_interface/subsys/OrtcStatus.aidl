package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * Status of an ORTC call.
 */
@VintfStability
parcelable OrtcStatus {
    int slotId;
    int callId;
    int roomId;
    int reason;
    int status;
}

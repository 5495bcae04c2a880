package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * The ORTC room of a call.
 */
@VintfStability
parcelable OrtcRoomInfo {
    int slotId;
    int callId;
    int roomId;
    int roomState;
    int action;
}

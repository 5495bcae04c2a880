package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * Connection of an ORTC call.
 */
@VintfStability
parcelable OrtcConnectInfo {
    int slotId;
    int callId;
    int roomId;
    int connectState;
    String connectInfo;
}

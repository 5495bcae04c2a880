package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * A command for the ICC controller.
 */
@VintfStability
parcelable IccReqInfo {
    int reqId;
    byte[] data;
    /** Milliseconds; 4000 at most. */
    int timeout;
}

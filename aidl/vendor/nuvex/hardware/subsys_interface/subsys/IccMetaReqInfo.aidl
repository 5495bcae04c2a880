package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * A command for the ICC controller whose answer goes to a callback of its own.
 */
@VintfStability
parcelable IccMetaReqInfo {
    int id;
    /** Chosen by the client, echoed in the answer. */
    int token;
    int type;
    int reqId;
    byte[] data;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * Answer to an ICC command.
 */
@VintfStability
parcelable IccRespInfo {
    /** The low byte of a request id; clients match answers by serial. */
    byte reqId;
    /** Empty when there is none. */
    byte[] data;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * ICC information.
 */
@VintfStability
parcelable IccIndInfo {
    int id;
    /** At most 256 bytes. */
    byte[] data;
}

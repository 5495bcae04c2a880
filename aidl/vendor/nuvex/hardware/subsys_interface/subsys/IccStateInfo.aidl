package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * State of the ICC controller.
 */
@VintfStability
parcelable IccStateInfo {
    byte state;
    byte bypass;
    /** The number of entries of modeTypes and of modeValues. */
    byte modeNum;
    byte[] modeTypes;
    /** Entry i belongs to entry i of modeTypes. */
    byte[] modeValues;
}

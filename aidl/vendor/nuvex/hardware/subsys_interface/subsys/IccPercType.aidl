package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * One perception entry.
 */
@VintfStability
parcelable IccPercType {
    byte value0;
    byte value1;
    byte value2;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.IccPercType;

/**
 * Perception entries, in the order of the event.
 */
@VintfStability
parcelable IccPerceptionInfo {
    IccPercType[] percTypes;
}

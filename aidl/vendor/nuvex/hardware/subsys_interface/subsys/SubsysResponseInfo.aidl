package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.SUBSYS_Errno;

/**
 * Header of every response.
 */
@VintfStability
parcelable SubsysResponseInfo {
    /** Always 0. */
    int type;
    /** The serial of the request that is answered. */
    int serial;
    SUBSYS_Errno error = SUBSYS_Errno.SUCCESS;
}

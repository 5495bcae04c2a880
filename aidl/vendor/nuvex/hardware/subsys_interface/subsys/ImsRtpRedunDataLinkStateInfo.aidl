package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * State of the redundancy data link; each field holds one byte's value.
 */
@VintfStability
parcelable ImsRtpRedunDataLinkStateInfo {
    int linkField1;
    int linkField2;
    int linkField3;
    int linkField4;
    int linkField5;
}

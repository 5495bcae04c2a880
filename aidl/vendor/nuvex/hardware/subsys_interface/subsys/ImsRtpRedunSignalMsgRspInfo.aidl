package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * Answer to a redundancy signalling message; all zero when it failed.
 */
@VintfStability
parcelable ImsRtpRedunSignalMsgRspInfo {
    int rspField1;
    int rspField2;
    int rspField3;
    int rspField4;
    int rspField5;
}

package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.IccMetaRespInfo;

/**
 * Receives the answer to one sendIccMetaCmd.
 */
@VintfStability
oneway interface ISubsysIccMetaCallback {
    void onIccMetaResp(in IccMetaRespInfo info);
}

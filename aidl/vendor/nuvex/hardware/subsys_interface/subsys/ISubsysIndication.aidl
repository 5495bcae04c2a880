package vendor.nuvex.hardware.subsys_interface.subsys;

import vendor.nuvex.hardware.subsys_interface.subsys.IccIndInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.IccPerceptionInfo;
import vendor.nuvex.hardware.subsys_interface.subsys.IccStateInfo;

/**
 * Events of the RF subsystem and of the service.
 */
@VintfStability
oneway interface ISubsysIndication {
    void sendSubsysStateChanged(in boolean state);
    void sendSwtpStatusChanged(in byte status);
    void sendiccStateChanged(in IccStateInfo info);
    void notifyIccPercStateChangedInd(in IccPerceptionInfo info);
    void notifyIccInfoChanged(in IccIndInfo info);
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/** Outcome of a request. A component's own codes outside this range reach the client as GENERIC_FAILURE. */
@VintfStability
@Backing(type="int")
enum SUBSYS_Errno {
    SUCCESS = 0,
    NOT_SUPPORTED = 1,
    GENERIC_FAILURE = 2,
    /** The meaning of these is set by the component that answers. */
    COMPONENT_ERROR_3 = 3,
    COMPONENT_ERROR_4 = 4,
    COMPONENT_ERROR_5 = 5,
    COMPONENT_ERROR_6 = 6,
    COMPONENT_ERROR_7 = 7,
    COMPONENT_ERROR_8 = 8,
    COMPONENT_ERROR_9 = 9,
}

package vendor.nuvex.hardware.subsys_interface.subsys;

/**
 * Answer to an ICC meta command.
 */
@VintfStability
parcelable IccMetaRespInfo {
    int id;
    int token;
    /** The low byte of the request's type; 0 when the command failed. */
    byte type;
    /** Whether the command succeeded. */
    boolean result;
    /** Empty when the command failed or answered nothing. */
    byte[] data;
}

// The functions that plugin_call measures.

#include <cstdint>

extern "C" {

uint8_t iccSetAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return static_cast<uint8_t>(enable + freq + cc + ant);
}

uint8_t iccSetCoexAntennaState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant) {
    return static_cast<uint8_t>(enable + freq + cc + ant);
}
}

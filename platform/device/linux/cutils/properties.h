#pragma once

#include <cstdint>

extern "C" {

// The property as a bool: true for "1", "y", "yes", "on" and "true", false for "0", "n", "no", "off" and "false", the
// default for any other value, for a property that is not set and for a null key. Thread: any.
//
// On Linux the properties are the lines `key=value` of the device's /vendor/build.prop, read at the first call.
int8_t property_get_bool(const char* key, int8_t default_value);
}

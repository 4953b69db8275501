// The system properties, as Android's libcutils declares them.

#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The property's value as a truth value: 1, y, yes, on and true are true; 0, n, no, off and
// false are false. Anything else, or a property that is not set, gives `default_value`.
int8_t property_get_bool(const char* key, int8_t default_value);

#ifdef __cplusplus
}
#endif

// The system properties, as Android's libcutils declares them.

#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The property's value as a truth value: 1, y, yes, on and true are true; 0, n, no, off and
// false are false. Anything else, or a property that is not set, gives `default_value`.
int8_t property_get_bool(const char* key, int8_t default_value);

// Room for the longest value and its zero.
#define PROPERTY_VALUE_MAX 92

// Copies the property's value, or `default_value` where there is none or an empty one, to `value`,
// which has room for PROPERTY_VALUE_MAX bytes; what is longer is cut off. A null default is an
// empty one. Returns the length.
int property_get(const char* key, char* value, const char* default_value);

#ifdef __cplusplus
}
#endif

// The part of Android's libcutils that the program uses. A system property is the environment
// variable of the same name.

#pragma once

#include <cstdint>

// The property as an integer: decimal, octal with a leading 0, hexadecimal with 0x, or binary with
// 0b where the C library reads it (glibc 2.38 does); leading blanks are allowed. A property that
// is unset, or is not wholly such a number in 32-bit range, gives `defaultValue`.
extern "C" int32_t property_get_int32(const char* key, int32_t defaultValue);

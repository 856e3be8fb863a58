// strlcpy for a libc that has none: this header stands before the libc's own on the include path.

#pragma once

#include <stddef.h>
#include_next <string.h>

// Copies `source` to `destination`, which holds `size` bytes, cut so that it always ends in a
// zero byte. Returns the length of `source`.
extern "C" size_t strlcpy(char* destination, const char* source, size_t size);

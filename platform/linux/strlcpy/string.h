// strlcpy, which glibc has from 2.38 on. This header stands before libc's own on the include path.

#pragma once

#include <stdio.h>
#include_next <string.h>

#if defined(__GLIBC__) && __GLIBC_MINOR__ < 38
// Copies `source` to `destination`, which holds `size` bytes, cut so that it always ends in a
// zero byte. Returns the length of `source`.
inline size_t strlcpy(char* destination, const char* source, size_t size) {
  return static_cast<size_t>(snprintf(destination, size, "%s", source));
}
#endif

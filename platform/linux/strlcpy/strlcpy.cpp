#include <cstddef>
#include <cstdio>
#include <cstring>

extern "C" size_t strlcpy(char* destination, const char* source, size_t size) {
  return static_cast<size_t>(std::snprintf(destination, size, "%s", source));
}

#include <algorithm>
#include <cstddef>
#include <cstring>

extern "C" size_t strlcpy(char* destination, const char* source, size_t size) {
  const size_t length = std::strlen(source);
  if (size > 0) {
    const size_t copied = std::min(length, size - 1);
    std::memcpy(destination, source, copied);
    destination[copied] = '\0';
  }
  return length;
}

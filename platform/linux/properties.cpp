#include <cutils/properties.h>

#include <cstdint>
#include <cstdlib>

int32_t property_get_int32(const char* key, int32_t defaultValue) {
  const char* text = std::getenv(key);
  if (text == nullptr) return defaultValue;

  char* end = nullptr;
  const int64_t value = std::strtoll(text, &end, 0);
  const bool isWhole = end != text && *end == '\0';
  if (!isWhole || value < INT32_MIN || value > INT32_MAX) return defaultValue;
  return static_cast<int32_t>(value);
}

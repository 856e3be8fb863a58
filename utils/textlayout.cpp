#include "utils/textlayout.h"

#include <cstddef>
#include <string>
#include <vector>

namespace {

// The bytes that `text` lacks to be `width` wide; 0 when it is wide enough.
std::size_t MissingBytes(const std::string& text, int width) {
  if (width <= 0 || text.size() >= static_cast<std::size_t>(width)) return 0;
  return static_cast<std::size_t>(width) - text.size();
}

}  // namespace

void SplitString(std::string text, std::vector<std::string>* pieces,
                 const std::string& delimiters) {
  std::size_t start = text.find_first_not_of(delimiters);
  while (start != std::string::npos) {
    const std::size_t end = text.find_first_of(delimiters, start);
    pieces->push_back(text.substr(start, end - start));
    start = text.find_first_not_of(delimiters, end);
  }
}

std::string Center(std::string text, int width, char fill) {
  const std::size_t missing = MissingBytes(text, width);
  const std::size_t left = missing / 2;
  return std::string(left, fill) + text + std::string(missing - left, fill);
}

std::string leftAlign(const std::string& text, int width, char fill) {
  return text + std::string(MissingBytes(text, width), fill);
}

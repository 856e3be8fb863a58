#include "config/jsonexponents.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace {

// Exponents of fewer digits do not overflow, in any text below 2 GB.
constexpr std::size_t kSafeDigits = 8;

bool IsDigit(char byte) { return '0' <= byte && byte <= '9'; }

// The digits of the negative exponent whose sign is at `minus`; 0 when that is no such sign.
std::size_t CountExponentDigits(const std::string& text, std::size_t minus) {
  if (minus == 0 || (text[minus - 1] != 'e' && text[minus - 1] != 'E')) return 0;
  const auto first = text.begin() + static_cast<std::ptrdiff_t>(minus) + 1;
  return static_cast<std::size_t>(std::find_if_not(first, text.end(), IsDigit) - first);
}

}  // namespace

bool MayHoldTinyExponent(const std::string& text) {
  for (std::size_t minus = text.find('-'); minus != std::string::npos;
       minus = text.find('-', minus + 1)) {
    if (CountExponentDigits(text, minus) > kSafeDigits) return true;
  }
  return false;
}

std::string WithoutTinyExponents(std::string text) {
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString) {
      if (text[i] == '\\') ++i;
    } else if (text[i] == '-') {
      const std::size_t digits = CountExponentDigits(text, i);
      if (digits <= kSafeDigits) continue;
      const auto first = text.begin() + static_cast<std::ptrdiff_t>(i) + 1;
      const auto safe = first + static_cast<std::ptrdiff_t>(digits - kSafeDigits);
      if (std::all_of(first, safe, [](char digit) { return digit == '0'; })) continue;
      std::fill(first, safe, '0');
      std::fill_n(safe, kSafeDigits, '9');
    }
  }
  return text;
}

#include "config/jsonexponents.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace {

// With the decimals that the loader lets through, an exponent of so many digits cannot overflow.
constexpr std::size_t kSafeDigits = 8;

bool IsDigit(char byte) { return '0' <= byte && byte <= '9'; }

// The place of the first digit past the safe ones in the exponent whose minus is at `minus`; npos
// when there is none, and for any other minus.
std::size_t FindUnsafeDigit(const std::string& text, std::size_t minus) {
  if (minus == 0 || (text[minus - 1] != 'e' && text[minus - 1] != 'E')) return std::string::npos;
  const std::size_t first = std::min(text.find_first_not_of('0', minus + 1), text.size());
  const std::size_t end = std::min(text.find_first_not_of("0123456789", first), text.size());
  return end - first > kSafeDigits ? first + kSafeDigits : std::string::npos;
}

}  // namespace

bool HasLongNegativeExponent(const std::string& text) {
  // A minus is rarer in a text than an "e".
  for (std::size_t minus = text.find('-'); minus != std::string::npos;
       minus = text.find('-', minus + 1)) {
    if (FindUnsafeDigit(text, minus) != std::string::npos) return true;
  }
  return false;
}

std::string WithoutLongNegativeExponents(std::string text) {
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString) {
      if (text[i] == '\\') ++i;
    } else if (text[i] == '-') {
      for (std::size_t digit = FindUnsafeDigit(text, i);
           digit < text.size() && IsDigit(text[digit]); ++digit) {
        text[digit] = ' ';
      }
    }
  }
  return text;
}

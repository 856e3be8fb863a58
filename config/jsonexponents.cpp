#include "config/jsonexponents.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace {

// Exponents of so many digits do not overflow in any text below 1 GB.
constexpr std::size_t kSafeDigitsBelowZero = 8;
constexpr std::size_t kSafeDigits = 9;

struct Exponent {
  std::size_t firstDigit;  // its place in the text
  std::size_t digits;
  std::size_t safeDigits;
};

bool IsDigit(char byte) { return '0' <= byte && byte <= '9'; }

// The exponent whose letter is at `letter`.
Exponent ReadExponent(const std::string& text, std::size_t letter) {
  const std::size_t sign = letter + 1;
  const bool isSigned = sign < text.size() && (text[sign] == '-' || text[sign] == '+');
  const bool isNegative = isSigned && text[sign] == '-';
  const std::size_t first = isSigned ? sign + 1 : sign;
  std::size_t end = first;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return {first, end - first, isNegative ? kSafeDigitsBelowZero : kSafeDigits};
}

bool MayHoldExtremeExponent(const std::string& text, char exponentLetter) {
  for (std::size_t letter = text.find(exponentLetter); letter != std::string::npos;
       letter = text.find(exponentLetter, letter + 1)) {
    const Exponent exponent = ReadExponent(text, letter);
    if (exponent.digits > exponent.safeDigits) return true;
  }
  return false;
}

}  // namespace

bool MayHoldExtremeExponent(const std::string& text) {
  return MayHoldExtremeExponent(text, 'e') || MayHoldExtremeExponent(text, 'E');
}

std::string WithoutExtremeExponents(std::string text) {
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString) {
      if (text[i] == '\\') ++i;
    } else if (text[i] == 'e' || text[i] == 'E') {
      const Exponent exponent = ReadExponent(text, i);
      if (exponent.digits <= exponent.safeDigits) continue;
      char* const first = text.data() + exponent.firstDigit;
      char* const safe = first + (exponent.digits - exponent.safeDigits);
      if (std::all_of(first, safe, [](char digit) { return digit == '0'; })) continue;
      std::fill(first, safe, '0');
      std::fill_n(safe, exponent.safeDigits, '9');
    }
  }
  return text;
}

#include "config/jsondocument.h"

#include <rapidjson/document.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qordex {

namespace {

// RapidJSON 1.1.0 adds a number's exponent and the count of its decimals in an int without a check
// (CVE-2024-38517): 0.00000000001e-2147483639 would read outside a table. The sum fits as long as
// a negative exponent has at most 8 digits, and fewer than 200,000,000 zeros stand after the point.
constexpr std::size_t kMaxExponentDigits = 8;
constexpr int kTooManyZeros = 200'000'000;

// RapidJSON counts bytes, members and elements in 32 bits.
constexpr std::size_t kMaxTextSize = UINT32_MAX;

struct Digits {
  std::size_t position;
  std::size_t count;
};

// Finds the excess digits of a negative exponent: those after the eighth, without leading zeros.
// `minus` is the position of its minus sign. The count is 0 if it has no excess digits, or if the
// byte there is not the minus sign of an exponent.
Digits ExcessExponentDigits(std::string_view text, std::size_t minus) {
  const char before = minus > 0 ? text[minus - 1] : '\0';
  if (text[minus] != '-' || (before != 'e' && before != 'E')) return {minus, 0};

  const std::size_t end = std::min(text.find_first_not_of("0123456789", minus + 1), text.size());
  const std::size_t first = std::min(text.find_first_not_of('0', minus + 1), end);
  const std::size_t excess = std::min(first + kMaxExponentDigits, end);
  return {excess, end - excess};
}

bool HasExcessExponentDigits(std::string_view text) {
  // Looks for the minus, because it is rarer in a text than an "e".
  std::size_t minus = text.find('-');
  while (minus != std::string_view::npos) {
    if (ExcessExponentDigits(text, minus).count > 0) return true;
    minus = text.find('-', minus + 1);
  }
  return false;
}

// Returns `text` with spaces in place of the excess digits of each negative exponent that is not in
// a string. The parser accepts or refuses the result as it does `text`, and reads the same values:
// an exponent with so many digits makes the value 0, with or without the excess.
std::string ShortenNegativeExponents(std::string_view text) {
  std::string shortened(text);
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString && text[i] == '\\') ++i;
    if (isInString) continue;
    const Digits excess = ExcessExponentDigits(text, i);
    if (excess.count > 0) shortened.replace(excess.position, excess.count, excess.count, ' ');
  }
  return shortened;
}

}  // namespace

bool JsonDocument::Parse(const char* text) {
  const std::string_view view = text;
  if (view.size() > kMaxTextSize) return false;
  if (std::search_n(view.begin(), view.end(), kTooManyZeros, '0') != view.end()) return false;
  std::string shortened;
  if (HasExcessExponentDigits(view)) {
    shortened = ShortenNegativeExponents(view);
    text = shortened.c_str();
  }
  return !GenericDocument::Parse<rapidjson::kParseIterativeFlag>(text).HasParseError();
}

}  // namespace qordex

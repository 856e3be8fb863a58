#include "config/jsondocument.h"

#include <rapidjson/document.h>
#include <rapidjson/error/error.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace qordex {

namespace {

// This many levels of recursion fit a stack of 64 KB.
constexpr std::size_t kRecursionLevels = 256;

// In an int, the parser subtracts from the exponent the count of decimals: the zeros after the
// point and at most 17 digits more. With fewer than kTooManyZeros of them, a negative exponent of
// kSafeDigits digits cannot overflow. A positive exponent may be as large as 308 plus that count;
// after some 214,748,040 zeros, reading one would overflow.
constexpr std::size_t kSafeDigits = 8;
constexpr int kTooManyZeros = 200'000'000;

// The digits past the safe ones of the exponent whose minus is at `i`; empty when there is none.
std::string_view UnsafeDigits(std::string_view text, std::size_t i) {
  const bool isExponent = i > 0 && text[i] == '-' && (text[i - 1] == 'e' || text[i - 1] == 'E');
  std::string_view digits = text.substr(isExponent ? i + 1 : text.size());
  digits = digits.substr(0, digits.find_first_not_of("0123456789"));
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  digits.remove_prefix(std::min(kSafeDigits, digits.size()));
  return digits;
}

// Replaces the root of `document` unless there is an error.
template <unsigned kFlags>
rapidjson::ParseErrorCode ParseInto(JsonDocument& document, const char* text) {
  // With a type of its own, each parser has its own copy of every function that it calls. GCC then
  // inlines those with one caller, which makes strings a fifth faster.
  struct StackAllocator : ThrowingAllocator {};
  rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, StackAllocator> reader;
  auto parse = [&](auto& /*base*/) {
    rapidjson::StringStream stream(text);
    return !reader.template Parse<kFlags>(stream, document).IsError();
  };
  document.Populate(parse);
  return reader.GetParseErrorCode();
}

}  // namespace

void* ThrowingAllocator::Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }

void* ThrowingAllocator::Realloc(void* block, std::size_t oldSize, std::size_t newSize) {
  void* const moved = CrtAllocator::Realloc(block, oldSize, newSize);
  if (moved == nullptr && newSize > 0) throw std::bad_alloc();
  return moved;
}

bool JsonDocument::Parse(const char* text) {
  const std::string_view view = text;
  if (view.size() > UINT32_MAX) return false;
  if (std::search_n(view.begin(), view.end(), kTooManyZeros, '0') != view.end()) return false;
  const std::optional<std::string> shortened = ShortenNegativeExponents(view);
  if (shortened) text = shortened->c_str();

  // Both flags accept the same texts, with the same values; the first recurses, and is faster.
  levelsLeft = kRecursionLevels;
  auto error = ParseInto<rapidjson::kParseNoFlags>(*this, text);
  if (error == rapidjson::kParseErrorTermination) {
    levelsLeft = SIZE_MAX;
    error = ParseInto<rapidjson::kParseIterativeFlag>(*this, text);
  }
  return error == rapidjson::kParseErrorNone;
}

std::optional<std::string> ShortenNegativeExponents(std::string_view text) {
  // A minus is rarer in a text than an "e".
  std::size_t minus = text.find('-');
  while (minus < text.size() && UnsafeDigits(text, minus).empty())
    minus = text.find('-', minus + 1);
  if (minus == std::string_view::npos) return std::nullopt;

  std::string shortened(text);
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString && text[i] == '\\') ++i;
    if (isInString) continue;
    const std::string_view digits = UnsafeDigits(text, i);
    std::fill_n(shortened.begin() + (digits.data() - text.data()), digits.size(), ' ');
  }
  return shortened;
}

}  // namespace qordex

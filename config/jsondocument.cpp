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

namespace {

// So many levels of recursion fit a stack of 64 KB.
constexpr std::size_t kRecursionLevels = 256;

// The parser subtracts the count of decimals from the exponent, in an int, and counts the zeros
// after the point and 17 digits more. With so few zeros in a row, a negative exponent of so many
// digits cannot overflow. A positive one may be up to 308 plus that count, and to read it would
// overflow after some 214,748,040 zeros.
constexpr std::size_t kSafeDigits = 8;
constexpr int kTooManyZeros = 200'000'000;

void* OrThrow(void* block, std::size_t size) {
  if (block == nullptr && size != 0) throw std::bad_alloc();
  return block;
}

// The digits past the safe ones of the exponent whose minus is at `minus`; empty for another minus.
std::string_view UnsafeDigits(std::string_view text, std::size_t minus) {
  if (minus == 0 || (text[minus - 1] != 'e' && text[minus - 1] != 'E')) return text.substr(0, 0);
  std::string_view digits = text.substr(minus + 1);
  digits = digits.substr(0, digits.find_first_not_of("0123456789"));
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  digits.remove_prefix(std::min(kSafeDigits, digits.size()));
  return digits;
}

// Whether there are such digits anywhere, be it in a string.
bool MayHaveUnsafeDigits(std::string_view text) {
  // A minus is rarer in a text than an "e".
  for (std::size_t minus = text.find('-'); minus != std::string_view::npos;
       minus = text.find('-', minus + 1)) {
    if (!UnsafeDigits(text, minus).empty()) return true;
  }
  return false;
}

}  // namespace

void* ThrowingAllocator::Malloc(std::size_t size) {
  return OrThrow(CrtAllocator::Malloc(size), size);
}

void* ThrowingAllocator::Realloc(void* block, std::size_t oldSize, std::size_t newSize) {
  return OrThrow(CrtAllocator::Realloc(block, oldSize, newSize), newSize);
}

bool JsonDocument::Parse(const char* text) {
  const std::string_view view = text;
  if (view.size() > UINT32_MAX) return false;
  if (std::search_n(view.begin(), view.end(), kTooManyZeros, '0') != view.end()) return false;
  const std::optional<std::string> shortened = ShortenNegativeExponents(view);
  if (shortened) text = shortened->c_str();

  // Both ways to parse accept the same texts, with the same values; the first is faster.
  auto error = ParseLevels<rapidjson::kParseNoFlags>(text, kRecursionLevels);
  if (error == rapidjson::kParseErrorTermination) {
    error = ParseLevels<rapidjson::kParseIterativeFlag>(text, SIZE_MAX);
  }
  return error == rapidjson::kParseErrorNone;
}

template <unsigned kFlags>
rapidjson::ParseErrorCode JsonDocument::ParseLevels(const char* text, std::size_t levels) {
  levelsLeft = levels;
  rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator> reader;
  auto read = [&](GenericDocument& /*this*/) {
    rapidjson::StringStream stream(text);
    return !reader.Parse<kFlags>(stream, *this).IsError();
  };
  Populate(read);
  return reader.GetParseErrorCode();
}

bool JsonDocument::StartObject() { return levelsLeft-- > 0 && GenericDocument::StartObject(); }

bool JsonDocument::EndObject(rapidjson::SizeType memberCount) {
  ++levelsLeft;
  return GenericDocument::EndObject(memberCount);
}

bool JsonDocument::StartArray() { return levelsLeft-- > 0 && GenericDocument::StartArray(); }

bool JsonDocument::EndArray(rapidjson::SizeType elementCount) {
  ++levelsLeft;
  return GenericDocument::EndArray(elementCount);
}

std::optional<std::string> ShortenNegativeExponents(std::string_view text) {
  if (!MayHaveUnsafeDigits(text)) return std::nullopt;
  std::string shortened(text);
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInString = !isInString;
    if (isInString) {
      if (text[i] == '\\') ++i;
    } else if (text[i] == '-') {
      const std::string_view digits = UnsafeDigits(text, i);
      shortened.replace(static_cast<std::size_t>(digits.data() - text.data()), digits.size(),
                        digits.size(), ' ');
    }
  }
  return shortened;
}

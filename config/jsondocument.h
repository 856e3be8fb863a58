// A JSON document that takes any text.
//
// RapidJSON alone can be ended by a text in four ways: it recurses once per nesting level, adds up
// the exponent and the decimals of a number in an int, counts the bytes of a string in 32 bits, and
// does not look whether it got memory. Here the parser stops recursing at a fixed depth and reads a
// deeper text once more with its place on the heap; exponents are shortened, and zeros limited, so
// that the sum fits an int; a text of more than UINT32_MAX bytes is refused; and memory that cannot
// be had is an exception.

#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Throws std::bad_alloc where RapidJSON's own allocator returns null. Both sizes are in bytes.
class ThrowingAllocator : public rapidjson::CrtAllocator {
 public:
  void* Malloc(std::size_t size);
  void* Realloc(void* block, std::size_t oldSize, std::size_t newSize);
};

class JsonDocument
    : public rapidjson::GenericDocument<
          rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<ThrowingAllocator>, ThrowingAllocator> {
 public:
  // Parses a text that ends at its first zero byte. Returns false when it is malformed, is longer
  // than UINT32_MAX bytes or holds 200,000,000 zeros in a row; throws std::bad_alloc when memory
  // does not suffice. In each case the document stays as it was. What a parse has allocated is
  // freed with the document.
  bool Parse(const char* text);

 private:
  // The reader calls the following for each object and array; the base class has the other events.
  template <typename, typename, typename>
  friend class rapidjson::GenericReader;
  bool StartObject();
  bool EndObject(rapidjson::SizeType memberCount);
  bool StartArray();
  bool EndArray(rapidjson::SizeType elementCount);

  // Parses what nests no deeper than `levels`; a deeper text gives kParseErrorTermination.
  template <unsigned kFlags>
  rapidjson::ParseErrorCode ParseLevels(const char* text, std::size_t levels);

  std::size_t levelsLeft = 0;
};

// Returns `text` with at most eight digits, not counting leading zeros, in the negative exponents
// of its numbers, and spaces in place of the others; nothing when it has no longer exponent. The
// parser accepts or refuses the result as it does `text` and reads the same values: a number with
// such an exponent is 0 either way.
std::optional<std::string> ShortenNegativeExponents(std::string_view text);

// A JSON document that takes any text.
//
// A text can crash plain RapidJSON: it recurses once per nesting level, adds up an exponent and the
// decimals before it in an int, counts in 32 bits, and does not check whether it got memory. Here a
// text that nests deeply is parsed again without recursion; negative exponents and runs of zeros
// are kept so short that the sum fits an int; a text of more than UINT32_MAX bytes is refused; and
// running out of memory throws.

#pragma once

// This RapidJSON has a namespace of its own, so that a program may also hold one of another version
// or with other macros, these three among them.
#undef RAPIDJSON_NAMESPACE
#undef RAPIDJSON_NAMESPACE_BEGIN
#undef RAPIDJSON_NAMESPACE_END
#define RAPIDJSON_NAMESPACE qordex::rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace qordex::rapidjson {
#define RAPIDJSON_NAMESPACE_END }
#include <rapidjson/document.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qordex {

// Throws std::bad_alloc where RapidJSON's own allocator returns null. Sizes are in bytes.
class ThrowingAllocator : public rapidjson::CrtAllocator {
 public:
  void* Malloc(std::size_t size);
  void* Realloc(void* block, std::size_t oldSize, std::size_t newSize);
};

class JsonDocument
    : public rapidjson::GenericDocument<
          rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<ThrowingAllocator>, ThrowingAllocator> {
 public:
  // Parses a text that ends at its first zero byte. Returns false when it is malformed, holds a
  // number that RapidJSON refuses or 200,000,000 zeros in a row, or is longer than UINT32_MAX
  // bytes; throws std::bad_alloc when it does not fit into memory. In each case the document stays
  // as it was. What a parse stores is freed with the document; a deep text takes two parses.
  bool Parse(const char* text);

  // Called by the parser, like the base class's other handlers. These limit the depth.
  bool StartObject() { return levelsLeft-- > 0 && GenericDocument::StartObject(); }
  bool StartArray() { return levelsLeft-- > 0 && GenericDocument::StartArray(); }
  bool EndObject(rapidjson::SizeType n) { return ++levelsLeft, GenericDocument::EndObject(n); }
  bool EndArray(rapidjson::SizeType n) { return ++levelsLeft, GenericDocument::EndArray(n); }

 private:
  std::size_t levelsLeft = 0;
};

// Returns `text` with spaces in place of all but the first eight digits, not counting leading
// zeros, of each negative exponent; nullopt when no exponent is that long, not even in a string.
// The parser accepts or refuses the result as it does `text`, and reads the same values: a number
// with such an exponent is 0 either way.
std::optional<std::string> ShortenNegativeExponents(std::string_view text);

}  // namespace qordex

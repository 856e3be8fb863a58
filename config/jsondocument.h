// The document that a JSON file is read into: RapidJSON's, made safe for any text.
//
// It is parsed without recursion, so that nesting is limited only by memory. An allocation that
// fails throws, because RapidJSON itself does not check whether it got memory.

#pragma once

// RapidJSON gets a namespace of its own here, so that a program can also use another version of it,
// or the same version with other macros. A user's own values of these three macros are replaced.
#undef RAPIDJSON_NAMESPACE
#undef RAPIDJSON_NAMESPACE_BEGIN
#undef RAPIDJSON_NAMESPACE_END
#define RAPIDJSON_NAMESPACE qordex::rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace qordex::rapidjson {
#define RAPIDJSON_NAMESPACE_END }
#include <rapidjson/document.h>

#include <cstddef>
#include <new>

namespace qordex {

// Throws std::bad_alloc where RapidJSON's own allocator returns null. Sizes are in bytes. The
// functions are inline because the parser calls them from its innermost loops.
class ThrowingAllocator : public rapidjson::CrtAllocator {
 public:
  void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }

  void* Realloc(void* block, std::size_t oldSize, std::size_t newSize) {
    void* const moved = CrtAllocator::Realloc(block, oldSize, newSize);
    if (moved == nullptr && newSize > 0) throw std::bad_alloc();
    return moved;
  }
};

class JsonDocument
    : public rapidjson::GenericDocument<
          rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<ThrowingAllocator>, ThrowingAllocator> {
 public:
  // Parses a text that ends at its first zero byte. Returns false when it is malformed, holds a
  // number that RapidJSON refuses or 200,000,000 zeros in a row, or is longer than UINT32_MAX
  // bytes; throws std::bad_alloc when it does not fit into memory. In each case the document stays
  // as it was. What a parse stores is freed with the document.
  bool Parse(const char* text);
};

}  // namespace qordex

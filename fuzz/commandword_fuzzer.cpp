// Any command word through the argument parser, against a search in the whole word at once.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessagestring.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t size) {
  static QORDEXImpl client;
  // Fills the catalogue, and finds no service.
  [[maybe_unused]] static const int status = client.Initialize({"/nonexistent", "/nonexistent"});
  std::string word(input, input + size);
  word.erase(std::min(word.find('\0'), word.size()));
  char module[] = "sarvik";
  char* argv[] = {module, module, word.data(), nullptr};
  QORDEXMessageString record = {};
  const bool isNamed = client.ParseArguments(3, argv, record) != kStatusNoCommandName;
  if (isNamed != std::regex_search(word, std::regex("--[a-zA-Z]"))) std::abort();
  return 0;
}

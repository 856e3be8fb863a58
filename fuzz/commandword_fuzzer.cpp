// Any command word through the argument parser, against a search in the whole word at once.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <regex>
#include <string>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessagestring.h"

namespace {

std::unique_ptr<QORDEXImpl> MakeClient() {
  auto client = std::make_unique<QORDEXImpl>();
  client->Initialize(
      {"/nonexistent", "/nonexistent"});  // fills the catalogue, and finds no service
  return client;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t size) {
  static const std::unique_ptr<QORDEXImpl> client = MakeClient();
  std::string word(input, input + size);
  word.erase(std::min(word.find('\0'), word.size()));
  char module[] = "sarvik";
  char* argv[] = {module, module, word.data(), nullptr};
  QORDEXMessageString record = {};
  const bool isNamed = client->ParseArguments(3, argv, record) != kStatusNoCommandName;
  if (isNamed != std::regex_search(word, std::regex("--[a-zA-Z]"))) std::abort();
  return 0;
}

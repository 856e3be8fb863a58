// Any command word through the argument parser, against a plain search for the name in it.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

bool HoldsCommandName(const std::string& word) {
  for (std::size_t i = 2; i < word.size(); ++i) {
    const bool isLetter = std::isalpha(static_cast<unsigned char>(word[i])) != 0;
    if (isLetter && word.compare(i - 2, 2, "--") == 0) return true;
  }
  return false;
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
  if (isNamed != HoldsCommandName(word)) std::abort();
  return 0;
}

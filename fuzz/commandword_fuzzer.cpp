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

int ExpectedStatus(const std::string& word) {
  std::size_t name = 2;
  const auto isLetter = [&](std::size_t i) {
    return i < word.size() && std::isalpha(static_cast<unsigned char>(word[i])) != 0;
  };
  while (name < word.size() && !(word.compare(name - 2, 2, "--") == 0 && isLetter(name))) ++name;
  std::size_t end = name;
  while (isLetter(end)) ++end;
  if (end == name) return kStatusNoCommandName;
  const std::string found = word.substr(name, end - name);
  if (found == "help" || found == "h") return kStatusOk;
  const bool needsArgument = found == "inject" || found == "i" || found == "signal" || found == "s";
  return needsArgument ? kStatusTooFewArguments : kStatusUnknownCommand;
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
  if (client->ParseArguments(3, argv, record) != ExpectedStatus(word)) std::abort();
  return 0;
}

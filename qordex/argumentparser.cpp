// Command line to catalogue entry.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <regex>
#include <string>

#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessagestring.h"

namespace {

// libstdc++ matches recursively, one frame a letter, and a command word can be long enough to
// overflow the stack. So the expression sees this many bytes at a time.
constexpr std::ptrdiff_t kWindowSize = 256;

// Two hyphens and a letter. Windows overlap by one byte less, so that no match
// is lost between two.
constexpr std::ptrdiff_t kShortestMatch = 3;

bool IsLetter(char byte) { return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z'); }

// Traits of a language without character classes and collation. The expression has none of either,
// but libstdc++ asks the locale for both at all 256 bytes when it compiles the bracket, which made
// up a fifth of all instructions of a run.
struct PlainTraits : std::regex_traits<char> {
  template <typename Iterator>
  static std::string transform_primary(Iterator /*first*/, Iterator /*last*/) {
    return {};
  }
  static bool isctype(char /*byte*/, char_class_type /*characterClass*/) { return false; }
};

// The letters after the leftmost two hyphens that a letter follows; empty when there are none.
std::string FindCommandName(const std::string& word) {
  const std::basic_regex<char, PlainTraits> commandName("--([a-zA-Z]+)");
  std::smatch match;
  for (auto start = word.cbegin();;) {
    const auto end = start + std::min(kWindowSize, word.cend() - start);
    if (std::regex_search(start, end, match, commandName)) {
      // The window may end within the name.
      return {match[1].first, std::find_if_not(match[1].second, word.cend(), IsLetter)};
    }
    if (end == word.cend()) return "";
    start = end - (kShortestMatch - 1);
  }
}

}  // namespace

int QORDEXImpl::ParseArguments(int argc, char** argv, QORDEXMessageString& record) {
  std::string moduleName;
  std::string cmdName;
  if (argc != 0) {
    moduleName = argc > 1 ? argv[1] : "";
    cmdName = FindCommandName(argc > 2 ? argv[2] : "");
    if (cmdName.empty()) {
      std::puts("Command name is error");
      return kStatusNoCommandName;
    }
  }

  const auto found = cmdOptions.find(CatalogueKey(moduleName, cmdName));
  if (found == cmdOptions.end()) {
    std::puts("No such module or command");
    return kStatusUnknownCommand;
  }

  CmdOption& option = found->second;
  const int argumentCount = std::max(argc - 3, 0);
  if (argumentCount < option.minArgs) return kStatusTooFewArguments;

  option.args.insert(option.args.end(), argv + argc - argumentCount, argv + argc);
  return option.parser(&option, record);
}

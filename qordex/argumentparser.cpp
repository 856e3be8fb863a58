// Finds the catalogue entry for a command line and runs its parser.

#include <algorithm>
#include <cstdio>
#include <regex>
#include <string>

#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessagestring.h"

namespace {

bool IsLetter(char byte) { return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z'); }

// The letters after the first "--" that is followed by a letter; empty when there is none.
std::string FindCommandName(const std::string& word) {
  // libstdc++ matches recursively, one frame per letter, and a long name would overflow the stack.
  // So the expression ends with the first letter, and the end of the name is found here.
  std::smatch found;
  if (!std::regex_search(word, found, std::regex("--[a-zA-Z]"))) return "";
  const auto firstLetter = found[0].second - 1;
  return {firstLetter, std::find_if_not(firstLetter, word.end(), IsLetter)};
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
  constexpr int kFirstArgument = 3;  // after the program's name, the module and the command
  if (argc - kFirstArgument < option.minArgs) return kStatusTooFewArguments;

  for (int i = kFirstArgument; i < argc; ++i) option.args.emplace_back(argv[i]);
  return option.parser(&option, record);
}

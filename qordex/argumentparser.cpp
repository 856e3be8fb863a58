// Command line to catalogue entry, whose parser fills the record.

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

bool IsLetter(char byte) { return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z'); }

// The letters after the leftmost two hyphens that a letter follows; empty when there are none.
std::string FindCommandName(const std::string& word) {
  const std::regex commandName("--([a-zA-Z]+)");
  for (std::size_t hyphens = word.find("--"); hyphens != std::string::npos;
       hyphens = word.find("--", hyphens + 1)) {
    // libstdc++ matches recursively, one frame per letter, and a long name would overflow the
    // stack. So the expression sees one letter, and the others are counted here.
    if (std::regex_match(word.substr(hyphens, 3), commandName)) {
      const auto name = word.begin() + static_cast<std::ptrdiff_t>(hyphens) + 2;
      return {name, std::find_if_not(name, word.end(), IsLetter)};
    }
  }
  return "";
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

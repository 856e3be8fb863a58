// The commands that the program knows. What a command does is the service's business; the catalogue
// says how it is named, how many arguments it needs and which function builds its request. Modules
// register their own commands.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "qordex/qordexmessagestring.h"

// One command of one module.
struct CmdOption {
  // Builds the request for `option` into `record`, which has been cleared to zero. Returns a status
  // of the client.
  using Parser = int (*)(CmdOption* option, QORDEXMessageString& record);

  int32_t moduleType = 0;  // a QORDEXMessage::QDXModuleType
  std::string moduleName;
  std::string cmdName;
  std::string shortName;  // one letter that stands for cmdName on the command line
  uint8_t minArgs = 0;
  std::string reservedText;  // this and the next are unused, and empty in every entry
  std::multimap<std::string, std::string> reservedPairs;
  std::vector<std::string> args;  // empty until a command line names the entry
  Parser parser = nullptr;
};

// Entries by CatalogueKey. Each command is stored twice, under its full and its short name.
using Catalogue = std::map<std::string, CmdOption>;

// The key of a command, by its full or short name: at most 511 bytes, longer ones are cut.
std::string CatalogueKey(const std::string& moduleName, const std::string& cmdName);

// Stores `entry` in `catalogue` under both of its names and replaces what is there. An entry
// without a module name is skipped.
void RegisterCommand(const CmdOption& entry, Catalogue& catalogue);

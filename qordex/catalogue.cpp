#include "qordex/catalogue.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include "qordex/qordexmessage.pb.h"
#include "qordex/sarvikmodule.h"

namespace {

struct BuiltinCommand {
  const char* cmdName;
  const char* shortName;
  uint8_t minArgs;
};

constexpr BuiltinCommand kSarvikCommands[] = {
    {"help", "h", 0},
    {"inject", "i", 1},
    {"signal", "s", 1},
};

}  // namespace

std::string CatalogueKey(const std::string& moduleName, const std::string& cmdName) {
  char key[512];
  std::snprintf(key, sizeof(key), "moduleName: %s,cmdName: %s", moduleName.c_str(),
                cmdName.c_str());
  return key;
}

void RegisterCommand(const CmdOption& entry, Catalogue& catalogue) {
  if (entry.moduleName.empty()) return;
  catalogue[CatalogueKey(entry.moduleName, entry.cmdName)] = entry;
  catalogue[CatalogueKey(entry.moduleName, entry.shortName)] = entry;
}

Catalogue BuiltinCatalogue() {
  Catalogue catalogue;
  for (const BuiltinCommand& command : kSarvikCommands) {
    CmdOption entry;
    entry.moduleType = QORDEXMessage::SARVIK;
    entry.moduleName = "sarvik";
    entry.cmdName = command.cmdName;
    entry.shortName = command.shortName;
    entry.minArgs = command.minArgs;
    entry.parser = SarvikModuleArgParser;
    RegisterCommand(entry, catalogue);
  }
  return catalogue;
}

#include "qordex/catalogue.h"

#include <cstdio>
#include <string>

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

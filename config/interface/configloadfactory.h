// Makes configuration loaders.

#pragma once

#include <utility>

#include "config/configloadjson.h"
#include "config/interface/configload.h"
#include "log/sarviksystemlog.h"

// Returns a loader that has read `data.filePath`, or null, with a line in the log, when the file
// type is unknown or the file cannot be loaded. The caller owns the loader.
// Every source file has a log function of its own, with its own threshold. `static` gives it its
// own copy of this function too; an inline function that all files share could call only one of
// those.
static inline ConfigLoad* CreateObject(ConfigLoadCreateData data) {
  if (data.fileType == kConfigFileTypeJson) return ConfigLoadJson::Create(std::move(data));
  SARVIK_LOG_ERROR("Error fileType");
  return nullptr;
}

// Makes configuration loaders.

#pragma once

#include <utility>

#include "config/configloadjson.h"
#include "config/interface/configload.h"
#include "log/sarviksystemlog.h"

// Returns a loader that has read `data.filePath`, or null, with a line in the log, when the file
// type is unknown or the file cannot be loaded. The caller owns the loader.
//
// The log function is static: each source file has its own copy, with its own threshold. This
// function is static too, so that it logs with the copy of the file that calls it.
static inline ConfigLoad* CreateObject(ConfigLoadCreateData data) {
  if (data.fileType == kConfigFileTypeJson) return ConfigLoadJson::Create(std::move(data));
  SARVIK_LOG_ERROR("Error fileType");
  return nullptr;
}

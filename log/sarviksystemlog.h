// Diagnostics for the Android log, one line per message under the tag "[SARVIKSYS]":
//
//   configloadjson.cpp:LINE GetInt() Failed to get key: width
//
// No message reaches standard output or standard error. A message is written when the
// threshold is at most the message's level; the priority is always error. The threshold is the
// system property "persist.vendor.camera.sarviksystem.loglevel", or 4 when that is unset or not an
// integer. Each source file has its own copy of the function and reads the threshold once, at its
// first message.

#pragma once

#include <android/log.h>
#include <cutils/properties.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

// Logs an error: a printf format and its arguments.
#define SARVIK_LOG_ERROR(...) \
  SarvikSystemLog(ANDROID_LOG_ERROR, __FILE__, __LINE__, __func__, __VA_ARGS__)

// The macro above supplies `file`, `line` and `func`. Only the part of `file` after its last
// slash is written. A line is cut at 1023 bytes.
[[maybe_unused]] __attribute__((format(printf, 5, 6))) static void SarvikSystemLog(
    int level, const char* file, int line, const char* func, const char* fmt, ...) {
  static const int threshold = property_get_int32("persist.vendor.camera.sarviksystem.loglevel", 4);
  if (threshold > level) return;

  char text[1024] = {};
  const char* lastSlash = std::strrchr(file, '/');
  const char* baseName = lastSlash == nullptr ? file : lastSlash + 1;
  const int prefixLength = std::snprintf(text, sizeof(text), "%s:%d %s() ", baseName, line, func);
  if (prefixLength >= 0 && static_cast<std::size_t>(prefixLength) < sizeof(text)) {
    const auto used = static_cast<std::size_t>(prefixLength);
    va_list arguments;
    va_start(arguments, fmt);
    std::vsnprintf(text + used, sizeof(text) - used, fmt, arguments);
    va_end(arguments);
  }
  __android_log_print(ANDROID_LOG_ERROR, "[SARVIKSYS]", "%s", text);
}

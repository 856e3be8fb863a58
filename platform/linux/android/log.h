// Android's log priorities and its print function, on top of syslog(3).

#pragma once

enum android_LogPriority {
  ANDROID_LOG_UNKNOWN = 0,
  ANDROID_LOG_DEFAULT,
  ANDROID_LOG_VERBOSE,
  ANDROID_LOG_DEBUG,
  ANDROID_LOG_INFO,
  ANDROID_LOG_WARN,
  ANDROID_LOG_ERROR,
  ANDROID_LOG_FATAL,
  ANDROID_LOG_SILENT,
};

// Hands one line to syslog with `tag` as its identity, and the process id. Without a syslog service
// the line is dropped. Always returns 1.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Android's name
extern "C" __attribute__((format(printf, 3, 4))) int __android_log_print(int priority,
                                                                         const char* tag,
                                                                         const char* format, ...);

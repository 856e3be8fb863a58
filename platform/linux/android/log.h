// The part of Android's liblog that the program uses, on top of syslog(3).

#pragma once

enum android_LogPriority { ANDROID_LOG_ERROR = 6 };

// Hands one line to syslog with `tag` as its identity, the process id, and syslog's error priority
// whatever `priority` is. Without a syslog service the line is dropped. Always returns 1.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Android's name
extern "C" __attribute__((format(printf, 3, 4))) int __android_log_print(int priority,
                                                                         const char* tag,
                                                                         const char* format, ...);

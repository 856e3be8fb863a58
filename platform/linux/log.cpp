#include <android/log.h>
#include <syslog.h>

#include <cstdarg>
#include <mutex>

namespace {

int SyslogPriority(int priority) {
  if (priority == ANDROID_LOG_FATAL) return LOG_CRIT;
  if (priority == ANDROID_LOG_ERROR) return LOG_ERR;
  if (priority == ANDROID_LOG_WARN) return LOG_WARNING;
  if (priority == ANDROID_LOG_VERBOSE || priority == ANDROID_LOG_DEBUG) return LOG_DEBUG;
  return LOG_INFO;
}

}  // namespace

int __android_log_print(int priority, const char* tag, const char* format, ...) {
  // Another thread must not close the log in between.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  // syslog keeps the pointer to the tag until the log is closed. Without the process id, the
  // journal would take a tag in brackets for one, and find no line under the tag.
  openlog(tag, LOG_PID, LOG_USER);
  va_list arguments;
  va_start(arguments, format);
  vsyslog(SyslogPriority(priority), format, arguments);
  va_end(arguments);
  closelog();
  return 1;
}

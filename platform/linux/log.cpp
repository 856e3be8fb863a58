#include <android/log.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>

namespace {

int SyslogPriority(int priority) {
  switch (priority) {
    case ANDROID_LOG_FATAL:
      return LOG_CRIT;
    case ANDROID_LOG_ERROR:
      return LOG_ERR;
    case ANDROID_LOG_WARN:
      return LOG_WARNING;
    case ANDROID_LOG_VERBOSE:
    case ANDROID_LOG_DEBUG:
      return LOG_DEBUG;
    default:
      return LOG_INFO;
  }
}

}  // namespace

int __android_log_print(int priority, const char* tag, const char* format, ...) {
  // Without a service, syslog still reads the time zone before it drops the line.
  if (access(_PATH_LOG, F_OK) != 0) return 1;

  // syslog keeps the pointer to the identity, which is the caller's, until the log is closed.
  openlog(tag, 0, LOG_USER);
  va_list arguments;
  va_start(arguments, format);
  vsyslog(SyslogPriority(priority), format, arguments);
  va_end(arguments);
  closelog();
  return 1;
}

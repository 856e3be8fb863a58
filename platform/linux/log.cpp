#include <android/log.h>
#include <syslog.h>

#include <cstdarg>
#include <mutex>

int __android_log_print(int /*priority*/, const char* tag, const char* format, ...) {
  // syslog keeps the tag for the whole process. Without the lock, another thread's closelog between
  // openlog and vsyslog would take the tag away.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  // The process id stands after the tag. Without it the journal takes the bracketed tag for the id,
  // and finds no line under the tag.
  openlog(tag, LOG_PID, LOG_USER);
  va_list arguments;
  va_start(arguments, format);
  vsyslog(LOG_ERR, format, arguments);
  va_end(arguments);
  closelog();
  return 1;
}

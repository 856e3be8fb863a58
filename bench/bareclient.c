// The least that a client can do for `qordex sarvik --help`: the request lies ready, and the
// reply's message is written out as it came.

#include <stdint.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// The record of qordex/qordexmessagestring.h.
struct Record {
  int32_t reserved;
  char data[4096];
  int32_t length;
};

// moduleName: "sarvik" moduleType: SARVIK cmds { options: "help" }
static struct Record record = {.data = "\x0a\x06sarvik\x10\x00\x1a\x06\x0a\x04help", .length = 18};

static const struct sockaddr_un service = {.sun_family = AF_UNIX,
                                           .sun_path = "/data/vendor/camera/qordex_socket"};

int main(void) {
  const int link = socket(AF_UNIX, SOCK_STREAM, 0);
  if (connect(link, (const struct sockaddr*)&service, sizeof(service)) != 0) return 1;
  if (send(link, &record, sizeof(record), 0) != sizeof(record)) return 1;
  if (recv(link, &record, sizeof(record), 0) != sizeof(record)) return 1;
  if (record.length < 0 || record.length > (int32_t)sizeof(record.data)) return 1;
  return write(STDOUT_FILENO, record.data, (size_t)record.length) == record.length ? 0 : 1;
}

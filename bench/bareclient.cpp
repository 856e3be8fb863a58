// The least that a client can do for `qordex sarvik --help`: the request is a constant, and
// the reply's message is written out as it came. Nothing but the C library is used.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include "qordex/qordexmessagestring.h"

namespace {

// moduleName: "sarvik" moduleType: SARVIK cmds { options: "help" }
QORDEXMessageString record = {0, "\x0a\x06sarvik\x10\x00\x1a\x06\x0a\x04help", 18};

constexpr sockaddr_un kService = {AF_UNIX, "/data/vendor/camera/qordex_socket"};

}  // namespace

int main() {
  const int link = socket(AF_UNIX, SOCK_STREAM, 0);
  const auto* address = reinterpret_cast<const sockaddr*>(&kService);
  if (connect(link, address, sizeof(kService)) != 0) return 1;
  if (send(link, &record, sizeof(record), 0) != sizeof(record)) return 1;
  if (recv(link, &record, sizeof(record), 0) != sizeof(record)) return 1;
  const auto capacity = static_cast<int32_t>(sizeof(record.data));
  if (record.length < 0 || record.length > capacity) return 1;
  const auto length = static_cast<std::size_t>(record.length);
  return write(STDOUT_FILENO, record.data, length) == record.length ? 0 : 1;
}

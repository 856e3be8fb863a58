// Program entry: the usage text, the help test and the one run of a command.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <regex>
#include <string>

#include "qordex/qordex.h"
#include "qordex/qordexmessagestring.h"

namespace {

constexpr char kConfigPath[] = "/odm/etc/camera/qordex_config.json";

// Says how to run a command of a module, and that "qordex sarvik --help" lists the commands.
constexpr char kUsage[] =
    "用法: qordex [模块] [--参数1] [参数2] ...\n"
    "模块:\n"
    "1. sarvik, 可以用 qordex sarvik [模块] [--参数1] [参数2] 执行指令, "
    "或者 qordex sarvik --help 查询具体指令";

bool IsHelpConfigArg(std::string arg) { return std::regex_match(arg, std::regex("-{1,2}help")); }

// Opens /dev/null on each of descriptors 0 to 2 that the caller has closed. Otherwise the socket
// would get that number, and what the program prints could be sent to the service.
void OccupyStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) open("/dev/null", O_RDWR);
  }
}

// Returns the exit status of the program.
int RunCommand(int argc, char** argv, QORDEXMessageString& record) {
  QORDEX* client = QORDEX::Create({kQORDEXSocketPath, kConfigPath});
  if (client == nullptr) {
    std::puts("Failed to create qordex");
    return 0;
  }
  int status = client->ParseArguments(argc, argv, record);
  if (status != kStatusOk) {
    std::printf("Command error: %d\n", status);
  } else {
    status = client->SendRequest(&record);
    if (status != kStatusOk) std::printf("Failed to send request: %d\n", status);
  }
  client->Destroy();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  QORDEXMessageString record = {};
  // A write to a closed socket or pipe, or beyond the limit on file sizes, then fails instead of
  // ending the program.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  OccupyStandardStreams();

  if (argc == 1 || (argc == 2 && IsHelpConfigArg(argv[1]))) {
    std::puts(kUsage);
    return 0;
  }
  if (argc == 2) return 0;
  return RunCommand(argc, argv, record);
}

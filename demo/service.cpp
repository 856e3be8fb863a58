// A stand-in for the camera service. It listens on the client's socket, logs each request in one
// line on standard error and answers it with a reply from a file in protocol-buffer text format,
// which is read at each request. When it cannot answer, a plain reply says why.

#include <fcntl.h>
#include <getopt.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/text_format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

namespace {

// What goes wrong with every answer.
enum class Fault { kNone, kSilent, kUnread };

struct FaultName {
  Fault fault;
  const char* name;
};

constexpr FaultName kFaultNames[] = {{Fault::kSilent, "silent"}, {Fault::kUnread, "unread"}};

struct Options {
  std::string repliesFolder = DEMO_REPLIES;
  Fault fault = Fault::kNone;
};

constexpr char kUsage[] =
    "usage: qordex-demo-service [--replies DIR] [--fault FAULT]\n"
    "\n"
    "Answers qordex in place of the camera service until it is interrupted.\n"
    "\n"
    "  --replies DIR  take the reply to a command from DIR/COMMAND.textproto, a QORDEXMessage\n"
    "                 in protocol-buffer text format (default: demo/replies in the source tree)\n"
    "  --fault FAULT  spoil every answer:\n"
    "                 silent  close the link in place of a reply\n"
    "                 unread  close the link before the request is read\n"
    "  --help         print this text\n";

// A client that stops or dawdles in the middle of a record holds the service up for no longer than
// this.
constexpr timeval kClientTimeout = {2, 0};

QORDEXMessage PlainReply(const std::string& line) {
  QORDEXMessage reply;
  QORDEXMessage::QDXCmd* cmd = reply.add_cmds();
  cmd->set_options("demo service");
  cmd->add_arguments(line.substr(0, 4000));  // no more than a record holds
  return reply;
}

// Keeps the first error of a text in protocol-buffer text format.
class FirstError : public google::protobuf::io::ErrorCollector {
 public:
  void AddError(int line, int column, const std::string& message) override {
    if (!text.empty()) return;
    text = std::to_string(line + 1) + ":" + std::to_string(column + 1) + ": " + message;
  }

  std::string text;
};

bool IsCommandName(const std::string& name) {
  const auto isLetter = [](char byte) {
    return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z');
  };
  return !name.empty() && std::all_of(name.begin(), name.end(), isLetter);
}

QORDEXMessage ReadReply(const std::string& folder, const std::string& command) {
  // Other names could lead out of the folder.
  if (!IsCommandName(command)) return PlainReply("No reply for command \"" + command + "\"");

  const std::string path = folder + "/" + command + ".textproto";
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return PlainReply("No reply: " + path + ": " + std::strerror(errno));
  google::protobuf::io::FileInputStream file(fd);
  file.SetCloseOnDelete(true);

  QORDEXMessage reply;
  FirstError error;
  google::protobuf::TextFormat::Parser parser;
  parser.RecordErrorsTo(&error);
  if (!parser.Parse(&file, &reply)) return PlainReply("Broken reply: " + path + ":" + error.text);
  if (file.GetErrno() != 0)
    return PlainReply("No reply: " + path + ": " + std::strerror(file.GetErrno()));
  if (reply.ByteSizeLong() > sizeof(QORDEXMessageString::data)) {
    return PlainReply("Broken reply: " + path + ": longer than a record holds");
  }
  return reply;
}

QORDEXMessage RejectRequest(const std::string& reason) {
  std::fprintf(stderr, "malformed request: %s\n", reason.c_str());
  return PlainReply("Malformed request: " + reason);
}

// The reply to the request in `record`, of which `received` bytes have come.
QORDEXMessage AnswerRequest(const QORDEXMessageString& record, std::size_t received,
                            const std::string& repliesFolder) {
  if (received < sizeof(record)) {
    return RejectRequest(std::to_string(received) + " bytes of a record of " +
                         std::to_string(sizeof(record)));
  }
  if (record.length < 0 || record.length > static_cast<int32_t>(sizeof(record.data))) {
    return RejectRequest("length " + std::to_string(record.length));
  }
  QORDEXMessage request;
  if (!request.ParseFromArray(record.data, record.length)) return RejectRequest("not a message");
  if (request.cmds().empty()) return RejectRequest("no command");

  std::fprintf(stderr, "request: %s\n", request.ShortDebugString().c_str());
  return ReadReply(repliesFolder, request.cmds(0).options());
}

void SendReply(int connection, const QORDEXMessage& reply) {
  QORDEXMessageString record = {};
  record.length = static_cast<int32_t>(reply.ByteSizeLong());
  reply.SerializeToArray(record.data, sizeof(record.data));
  // A client that has gone is none of the service's business.
  send(connection, &record, sizeof(record), 0);
}

void Serve(int connection, const Options& options) {
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kClientTimeout, sizeof(kClientTimeout));
  setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &kClientTimeout, sizeof(kClientTimeout));
  QORDEXMessageString record = {};
  if (options.fault == Fault::kUnread) {
    recv(connection, &record, sizeof(record), MSG_PEEK);
    return;
  }
  // One call, so that the time-out is for the whole record. It returns what came in time.
  const ssize_t received = recv(connection, &record, sizeof(record), MSG_WAITALL);
  if (received <= 0) return;  // the client rejected its command line

  const QORDEXMessage reply =
      AnswerRequest(record, static_cast<std::size_t>(received), options.repliesFolder);
  if (options.fault != Fault::kSilent) SendReply(connection, reply);
}

struct stat socketAttributes;  // of the socket at which this service listens

// Leaves alone a socket that another service has put in its place.
void RemoveSocket() {
  struct stat attributes = {};
  if (lstat(kQORDEXSocketPath, &attributes) == 0 && attributes.st_ino == socketAttributes.st_ino &&
      attributes.st_dev == socketAttributes.st_dev) {
    unlink(kQORDEXSocketPath);
  }
}

void RemoveSocketAndExit(int /*signal*/) {
  RemoveSocket();
  _exit(EXIT_SUCCESS);
}

// A socket at which nobody listens any more is a leftover; anything else is not ours to remove.
void RemoveStaleSocket(const sockaddr_un& address) {
  struct stat attributes = {};
  if (lstat(address.sun_path, &attributes) != 0 || !S_ISSOCK(attributes.st_mode)) return;
  const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (probe < 0) return;
  if (connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 &&
      errno == ECONNREFUSED) {
    unlink(address.sun_path);
  }
  close(probe);
}

// Returns the listening socket, or -1 with errno set.
int Listen() {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::copy(std::begin(kQORDEXSocketPath), std::end(kQORDEXSocketPath), address.sun_path);
  RemoveStaleSocket(address);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0 ||
      bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
      lstat(address.sun_path, &socketAttributes) != 0) {
    return -1;
  }
  std::signal(SIGINT, RemoveSocketAndExit);
  std::signal(SIGTERM, RemoveSocketAndExit);
  return listen(listener, SOMAXCONN) == 0 ? listener : -1;
}

[[noreturn]] void FailWithUsage(const char* problem, const char* word) {
  std::fprintf(stderr, "qordex-demo-service: %s '%s'\n%s", problem, word, kUsage);
  std::exit(EXIT_FAILURE);
}

Fault FaultNamed(const char* name) {
  for (const FaultName& fault : kFaultNames) {
    if (std::strcmp(fault.name, name) == 0) return fault.fault;
  }
  FailWithUsage("unknown fault", name);
}

// Ends the program when the command line is wrong or asks for help.
Options ReadOptions(int argc, char** argv) {
  constexpr option kLongOptions[] = {{"replies", required_argument, nullptr, 'r'},
                                     {"fault", required_argument, nullptr, 'f'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {nullptr, 0, nullptr, 0}};
  Options options;
  for (int given; (given = getopt_long(argc, argv, "", kLongOptions, nullptr)) != -1;) {
    switch (given) {
      case 'r':
        options.repliesFolder = optarg;
        break;
      case 'f':
        options.fault = FaultNamed(optarg);
        break;
      case 'h':
        std::fputs(kUsage, stdout);
        std::exit(EXIT_SUCCESS);
      default:  // getopt has named what is wrong
        std::fputs(kUsage, stderr);
        std::exit(EXIT_FAILURE);
    }
  }
  if (optind < argc) FailWithUsage("unexpected argument", argv[optind]);
  return options;
}

bool IsFolder(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return false;
  close(fd);
  return true;
}

// Opens /dev/null on each of descriptors 0 to 2 that the caller has closed. Otherwise a connection
// would get that number, and the log would reach the client.
void OccupyStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) open("/dev/null", O_RDWR);
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  const Options options = ReadOptions(argc, argv);
  if (!IsFolder(options.repliesFolder)) {
    std::perror(options.repliesFolder.c_str());
    return EXIT_FAILURE;
  }
  std::signal(SIGPIPE, SIG_IGN);
  const int listener = Listen();
  if (listener < 0) {
    std::perror(kQORDEXSocketPath);
    return EXIT_FAILURE;
  }
  for (int connection; (connection = accept(listener, nullptr, nullptr)) >= 0; close(connection))
    Serve(connection, options);
  std::perror("accept");  // for one, when no descriptors are left
  RemoveSocket();
  return EXIT_FAILURE;
}

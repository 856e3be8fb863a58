// A stand-in for the camera service. It listens on the client's socket, logs each request in one
// line on standard error and answers it with a reply from a file in protocol-buffer text format,
// which is read at each request. When it cannot answer, a plain reply says why.

#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/text_format.h>
#include <sys/socket.h>
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
#include <fstream>
#include <iterator>
#include <string>

#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

namespace {

constexpr char kUsage[] =
    "usage: qordex-demo-service [FOLDER]\n"
    "The reply to COMMAND is read from FOLDER/COMMAND.textproto (default: " DEMO_REPLIES ").\n";

// A reply that the client prints as one line.
QORDEXMessage PlainReply(const std::string& line) {
  QORDEXMessage reply;
  QORDEXMessage::QDXCmd* cmd = reply.add_cmds();
  cmd->set_options("demo service");
  cmd->add_arguments(line.substr(0, 4000));  // so that the message fits into 4096 bytes
  return reply;
}

// The reply to `command` from its file in `folder`, or a plain reply that says why there is none.
QORDEXMessage ReadReply(const std::string& folder, const std::string& command) {
  // A slash could lead out of the folder.
  if (command.find('/') != std::string::npos)
    return PlainReply("No reply for command \"" + command + "\"");

  const std::string path = folder + "/" + command + ".textproto";
  std::ifstream file(path);
  if (!file) return PlainReply("No reply: " + path + ": " + std::strerror(errno));

  QORDEXMessage reply;
  google::protobuf::io::IstreamInputStream stream(&file);
  // The parser prints the place of an error on standard error.
  if (!google::protobuf::TextFormat::Parse(&stream, &reply) || file.bad())
    return PlainReply("Broken reply: " + path);
  if (reply.ByteSizeLong() > sizeof(QORDEXMessageString::data))
    return PlainReply("Broken reply: " + path + ": longer than a record holds");
  return reply;
}

QORDEXMessage RejectRequest(const std::string& reason) {
  std::fprintf(stderr, "malformed request: %s\n", reason.c_str());
  return PlainReply("Malformed request: " + reason);
}

void LogRequest(const QORDEXMessage& request) {
  google::protobuf::TextFormat::Printer printer;
  printer.SetSingleLineMode(true);
  std::string text;
  if (printer.PrintToString(request, &text)) text.pop_back();  // the space after the last field
  std::fprintf(stderr, "request: %s\n", text.c_str());
}

// The reply to the request in `record`, of which `received` bytes have come.
QORDEXMessage AnswerRequest(const QORDEXMessageString& record, std::size_t received,
                            const std::string& repliesFolder) {
  if (received < sizeof(record)) {
    return RejectRequest(std::to_string(received) + " bytes of a record of " +
                         std::to_string(sizeof(record)));
  }
  if (record.length < 0 || record.length > static_cast<int32_t>(sizeof(record.data)))
    return RejectRequest("length " + std::to_string(record.length));
  QORDEXMessage request;
  if (!request.ParseFromArray(record.data, record.length)) return RejectRequest("not a message");
  if (request.cmds().empty()) return RejectRequest("no command");

  LogRequest(request);
  return ReadReply(repliesFolder, request.cmds(0).options());
}

// Reads one request from `connection` and answers it. Does not close the connection.
void Serve(int connection, const std::string& repliesFolder) {
  QORDEXMessageString request = {};
  const ssize_t received = recv(connection, &request, sizeof(request), MSG_WAITALL);
  if (received <= 0) return;  // the client rejected its command line

  const std::string bytes =
      AnswerRequest(request, static_cast<std::size_t>(received), repliesFolder).SerializeAsString();
  QORDEXMessageString reply = {};
  reply.length = static_cast<int32_t>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), reply.data);
  send(connection, &reply, sizeof(reply), 0);
}

// Returns a socket that listens at the client's path, or -1 with errno set.
int Listen() {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::copy(std::begin(kQORDEXSocketPath), std::end(kQORDEXSocketPath), address.sun_path);
  unlink(kQORDEXSocketPath);  // left by an earlier run
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  const auto* generic = reinterpret_cast<const sockaddr*>(&address);
  if (listener < 0 || bind(listener, generic, sizeof(address)) != 0) return -1;
  return listen(listener, SOMAXCONN) == 0 ? listener : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string repliesFolder = argc > 1 ? argv[1] : DEMO_REPLIES;
  if (argc > 2 || repliesFolder[0] == '-') {
    std::fputs(kUsage, stderr);
    return EXIT_FAILURE;
  }
  std::signal(SIGPIPE, SIG_IGN);  // a client may be gone before its reply

  const int listener = Listen();
  if (listener < 0) {
    std::perror(kQORDEXSocketPath);
    return EXIT_FAILURE;
  }
  while (true) {
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0) break;
    Serve(connection, repliesFolder);
    close(connection);
  }
  std::perror("accept");
  return EXIT_FAILURE;
}

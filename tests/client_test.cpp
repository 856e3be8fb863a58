// The program as its user and the service see it: the real binary over the real socket.

#include <fcntl.h>
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "cases.h"
#include "qordex/catalogue.h"
#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"
#include "qordex/sarvikmodule.h"

namespace {

using std::string_literals::operator""s;
using Words = std::vector<std::string>;

constexpr std::size_t kRecordSize = 4104;
constexpr char kFolder[] = "/data/vendor/camera";
constexpr char kConfigPath[] = "/odm/etc/camera/qordex_config.json";

// The record that carries `message`, written in protocol-buffer text format.
std::string Record(const std::string& message) {
  QORDEXMessage parsed;
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(message, &parsed)) << message;
  const std::string bytes = parsed.SerializeAsString();
  QORDEXMessageString record = {};
  record.length = static_cast<int32_t>(bytes.size());
  bytes.copy(record.data, sizeof(record.data));
  return {reinterpret_cast<const char*>(&record), sizeof(record)};
}

// Returns a socket that listens at `path`.
int Listen(const std::string& path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {AF_UNIX, {}};
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  unlink(address.sun_path);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
    throw std::runtime_error(path);
  listen(fd, 1);
  return fd;
}

// Reads `size` bytes, or what comes before the other end is closed.
std::string Read(int fd, std::size_t size) {
  std::string bytes;
  char byte = 0;
  while (bytes.size() < size && read(fd, &byte, 1) == 1) bytes += byte;
  return bytes;
}

// A client that has been started. What it prints on either stream comes through the pipe `output`.
struct RunningClient {
  pid_t process;
  int output;
};

// Turns this process into the client, which prints to `output`, starts without the descriptors in
// `closed`, and is ended after 20 seconds.
[[noreturn]] void Execute(const Words& words, int output, const std::vector<int>& closed) {
  Words command = {CLIENT};  // an emulator may stand before it
  command.insert(command.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  for (const int fd : closed) close(fd);
  alarm(20);
  execvp(arguments[0], arguments.data());
  std::abort();
}

RunningClient Start(const Words& words, const std::vector<int>& closed = {}) {
  // The client inherits the pipe, and so keeps it open until it ends, even without its streams.
  int output[2];
  EXPECT_EQ(pipe(output), 0);
  const pid_t process = fork();
  if (process == 0) Execute(words, output[1], closed);
  close(output[1]);
  return {process, output[0]};
}

// Returns the connection that the client makes to `listener`.
int Accept(int listener, const RunningClient& client) {
  // Without events to wait for, poll reports only that a pipe's other end is closed: the client has
  // ended.
  pollfd either[] = {{listener, POLLIN, 0}, {client.output, 0, 0}};
  poll(either, 2, 20'000);
  const bool isConnecting = either[0].revents != 0;
  if (!isConnecting) throw std::runtime_error("the client does not connect");
  return accept(listener, nullptr, nullptr);
}

// Waits for the end of the client. Returns what it has printed, and the exit status that a shell
// would show if it is not 0.
std::string Finish(const RunningClient& client) {
  std::string printed = Read(client.output, SIZE_MAX);
  close(client.output);
  int status = 0;
  waitpid(client.process, &status, 0);
  status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  if (status != 0) printed += "exit status " + std::to_string(status) + "\n";
  return printed;
}

struct Exchange {
  std::string request;  // all bytes that the client sent, up to two records
  std::string printed;  // as Finish returns it
};

// Runs the client with the given words against a service that takes one connection and one record,
// and answers with `reply`, or only closes its end when that is empty. The client closes the link.
Exchange RunAgainst(const std::string& reply, const Words& words = {"sarvik", "--help"},
                    const std::vector<int>& closed = {}) {
  const int listener = Listen(kQORDEXSocketPath);
  const RunningClient client = Start(words, closed);
  const int connection = Accept(listener, client);
  Exchange exchange;
  exchange.request = Read(connection, kRecordSize);
  send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
  if (reply.empty()) shutdown(connection, SHUT_WR);
  exchange.request += Read(connection, kRecordSize);
  exchange.printed = Finish(client);
  for (const int fd : {connection, listener}) close(fd);
  return exchange;
}

TEST(Client, SendsTheRequestInARecordOfFixedSize) {
  EXPECT_EQ(RunAgainst(Record(""), {"sarvik", "--inject", "5"}).request,
            "\0\0\0\0\x0a\x06sarvik\x10\0\x1a\x0b\x0a\x06inject\x12\x01\x35"s +
                std::string(4096 - 23, '\0') + "\x17\0\0\0"s);
}

TEST(Client, SendsAnEmptyMessageForARequestOf4096BytesOrMore) {
  // All but the argument takes 24 bytes of such a request.
  Words words = {"sarvik", "--inject", std::string(4095 - 24, 'x')};
  EXPECT_EQ(RunAgainst(Record(""), words).request.substr(4096), "xxx\0\xff\x0f\0\0"s);
  words[2] += 'x';
  EXPECT_EQ(RunAgainst(Record(""), words).request, Record(""));
  words.insert(words.end(), 14, std::string(131071, 'x'));  // the longest argument Linux accepts
  EXPECT_EQ(RunAgainst(Record(""), words).request, Record(""));
}

TEST(Client, PrintsEachFormOfReply) {
  for (const auto& [reply, printed] : ReadCases("replies.txt")) {
    EXPECT_EQ(RunAgainst(Record(reply)).printed, printed) << reply;
  }
}

TEST(Client, RefusesLengthsThatNoMessageHas) {
  // A message that fills the data to its last byte, mostly with a field that the schema does not
  // have, in a record whose reserved word is not 0.
  std::string record =
      Record("cmds { arguments: 'a' } descriptions: '" + std::string(4088, 'd') + "'");
  const std::size_t descriptions = record.find("\x22\xf8\x1f");  // field 4, of 4088 bytes
  ASSERT_NE(descriptions, std::string::npos);
  record[descriptions] = 0x2a;  // field 5
  record.replace(0, 4, "any ");
  const std::string invalid =
      "Invalid reply from server\nFailed to send request: 1\nexit status 1\n";
  for (const int32_t length : {0, 4095, 4096, 4097, -1, INT32_MIN, INT32_MAX}) {
    record.replace(4100, 4, reinterpret_cast<const char*>(&length), 4);
    const std::string valid = length == 4096 ? "a\n" : "";
    EXPECT_EQ(RunAgainst(record).printed, 0 <= length && length <= 4096 ? valid : invalid)
        << length;
  }
}

TEST(Client, DecodesWhatArrivesInOneReceive) {
  // The link stays open, so a client that waits for the rest does not end. The message is as long
  // as the request's, whose length must not stand in for one that has not arrived.
  for (const std::size_t cut : {1U, 7U, 4100U, 4101U}) {
    const std::string reply = Record("cmds { arguments: 'fourteen bytes' }").substr(0, cut);
    EXPECT_EQ(RunAgainst(reply).printed, cut > 4100 ? "fourteen bytes\n" : "");
  }
}

TEST(Client, ReportsAServiceThatDoesNotAnswer) {
  EXPECT_EQ(RunAgainst("").printed,
            "Received nothing from server\nFailed to send request: 1\nexit status 1\n");
}

TEST(Client, ReportsAServiceThatDoesNotReadTheRequest) {
  const int listener = Listen(kQORDEXSocketPath);
  const RunningClient client = Start({"sarvik", "--help"});
  const int connection = Accept(listener, client);
  pollfd request = {connection, POLLIN, 0};
  poll(&request, 1, 20'000);
  for (const int fd : {connection, listener}) close(fd);
  EXPECT_EQ(Finish(client),
            "Failed to receive message from server\nFailed to send request: 1\nexit status 1\n");
}

TEST(Client, KeepsWhatItPrintsFromTheServiceWhenStandardOutputIsClosed) {
  // A block that is longer than the buffer of a stream is written before the program ends.
  const std::string block =
      "cmds { options: 'a' arguments: ['" + std::string(2000, 'b') + "', 'c', 'd', 'e', 'f'] }";
  for (const char* type : {"string", "list"}) {
    const std::string reply =
        Record("cmds { options: 'type' arguments: '"s + type + "' } " + block);
    for (const std::vector<int>& closed : {std::vector<int>{1}, {0, 1, 2}}) {
      const Exchange exchange = RunAgainst(reply, {"sarvik", "--help"}, closed);
      EXPECT_EQ(exchange.printed, "") << type;
      EXPECT_EQ(exchange.request.size(), kRecordSize) << type;
    }
  }
}

TEST(Client, CutsTheSocketPathAt107BytesAndKeepsTheRequest) {
  const std::string path = kFolder + "/"s + std::string(107 - sizeof(kFolder), 's');
  const int listener = Listen(path);
  QORDEX* client = QORDEX::Create({path + "cut", kConfigPath});
  ASSERT_NE(client, nullptr);
  const QORDEXMessageString before = {7, "data", 7};
  QORDEXMessageString record = before;
  const int connection = accept(listener, nullptr, nullptr);
  EXPECT_EQ(write(connection, Record("").data(), kRecordSize), static_cast<ssize_t>(kRecordSize));
  EXPECT_EQ(client->SendRequest(&record), kStatusOk);
  EXPECT_EQ(std::memcmp(&record, &before, sizeof(record)), 0);
  EXPECT_EQ(Read(connection, kRecordSize).size(), kRecordSize);
  char more = 0;
  EXPECT_EQ(recv(connection, &more, 1, MSG_DONTWAIT), -1) << "the link is open both ways";
  client->Destroy();
  for (const int fd : {connection, listener}) close(fd);
}

TEST(Client, ReportsASendToALinkThatIsBrokenAlready) {
  std::signal(SIGPIPE, SIG_IGN);
  const int listener = Listen(kQORDEXSocketPath);
  QORDEX* client = QORDEX::Create({kQORDEXSocketPath, kConfigPath});
  close(accept(listener, nullptr, nullptr));
  QORDEXMessageString record = {};
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(client->SendRequest(&record), kStatusExchangeFailed);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\n Send Fail !!!: Broken pipe\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  client->Destroy();
}

TEST(Client, ClosesASocketThatFindsNoServiceAndReportsOneThatCannotBeCreated) {
  // First, because a sanitizer opens descriptors when it first checks an object of a class. dup
  // takes the lowest free descriptor, which is one more each time unless others are left open.
  const int lowestFree = dup(STDIN_FILENO);
  EXPECT_EQ(QORDEX::Create({"/nonexistent", kConfigPath}), nullptr);
  EXPECT_EQ(dup(STDIN_FILENO), lowestFree + 1);
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none = {0, limit.rlim_max};
  testing::internal::CaptureStdout();
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_EQ(QORDEX::Create({kQORDEXSocketPath, kConfigPath}), nullptr);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\n Could not creat socket, errno:24 \nFailed to initialize QORDEXImpl object\n");
}

TEST(Catalogue, HoldsACopyOfEachCommandUnderEachOfItsNames) {
  Catalogue catalogue;
  for (const char* key : {"moduleName: sarvik,cmdName: inject", "moduleName: sarvik,cmdName: i"})
    catalogue[key].args = {"stale"};
  RegisterSarvikModule(catalogue);
  RegisterCommand(CmdOption(), catalogue);  // left out, because it has no module
  EXPECT_EQ(catalogue.size(), 6U);
  for (const auto& [key, entry] : catalogue) EXPECT_TRUE(entry.args.empty()) << key;
  EXPECT_EQ(CatalogueKey(std::string(600, 'm'), ""), "moduleName: " + std::string(499, 'm'));
}

TEST(ArgumentParser, WritesTheRecordOnlyWhenItAccepts) {
  char word[] = "sarvik";
  char command[] = "--inject";
  char* argv[] = {word, word, command, word, nullptr};
  const QORDEXMessageString before = {7, "data", 7};
  QORDEXMessageString record = before;
  QORDEXImpl client;
  EXPECT_EQ(client.ParseArguments(0, argv, record), kStatusUnknownCommand);
  EXPECT_EQ(client.ParseArguments(1, argv, record), kStatusNoCommandName);
  EXPECT_EQ(client.ParseArguments(2, argv, record), kStatusNoCommandName);
  client.Initialize({"/nonexistent", "/nonexistent"});
  EXPECT_EQ(client.ParseArguments(3, argv, record), kStatusTooFewArguments);
  EXPECT_EQ(std::memcmp(&record, &before, sizeof(record)), 0);
  EXPECT_EQ(client.ParseArguments(4, argv, record), kStatusOk);
  EXPECT_EQ(record.reserved, 0);
}

}  // namespace

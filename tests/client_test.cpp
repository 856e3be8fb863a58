// The program as its user and the service see it: the real binary over the real socket.

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
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
constexpr std::size_t kLongestWord = 131071;  // that Linux hands to a program
constexpr char kConfigPath[] = "/odm/etc/camera/qordex_config.json";
constexpr char kWords[] = "/odm/etc/camera/words";
constexpr char kNotSent[] = "Failed to send request: 1\nexit status 1\n";
const Words kHelp = {CLIENT, "sarvik", "--help"};

struct Exchange {
  std::string request;  // all bytes that the client sent, up to two records
  std::string printed;  // as Finish gives it
};

// Starts the client, under the emulator if there is one, or another program, for 20 seconds at
// most.
std::FILE* Start(const Words& command) {
  std::ofstream words(kWords);
  for (const std::string& word : command) {
    if (*EMULATOR != '\0' && word == CLIENT) words << EMULATOR << '\0';
    words << word << '\0';
  }
  words.close();
  const std::string shell =
      R"(bash -c 'mapfile -d "" -t words <)"s + kWords + R"(; exec timeout 20 "${words[@]}"' 2>&1)";
  return popen(shell.c_str(), "r");  // NOLINT(cert-env33-c): of fixed text
}

// Waits for the program and returns all that it printed, and its exit status if that is not 0.
std::string Finish(std::FILE* program) {
  std::string printed;
  for (int byte; (byte = std::getc(program)) != EOF;) printed += static_cast<char>(byte);
  const int status = pclose(program);
  return status == 0 ? printed
                     : printed + "exit status " + std::to_string(WEXITSTATUS(status)) + "\n";
}

// The record that carries `message`, written in protocol-buffer text format.
std::string Record(const std::string& message) {
  QORDEXMessage parsed;
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(message, &parsed)) << message;
  QORDEXMessageString record = {};
  record.length = static_cast<int32_t>(parsed.ByteSizeLong());
  EXPECT_TRUE(parsed.SerializeToArray(record.data, sizeof(record.data)));
  return {reinterpret_cast<const char*>(&record), sizeof(record)};
}

// Returns a socket at `path`, which listens if it is a stream.
int Bind(int type, const std::string& path) {
  const int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
  sockaddr_un address = {AF_UNIX, {}};
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0) << path;
  if (type == SOCK_STREAM) listen(fd, 1);
  return fd;
}

// Appends to `bytes` a whole record or what comes before the link is closed.
void ReceiveRecord(int connection, std::string& bytes) {
  char buffer[kRecordSize];
  const ssize_t count = recv(connection, buffer, sizeof(buffer), MSG_WAITALL);
  if (count > 0) bytes.append(buffer, static_cast<std::size_t>(count));
}

// Runs a command against a service that takes one connection and one record, and answers with
// `reply`. The client closes the link.
Exchange RunAgainst(const std::string& reply, const Words& command) {
  Exchange exchange;
  const int listener = Bind(SOCK_STREAM, kQORDEXSocketPath);
  std::FILE* client = Start(command);
  const int connection = accept(listener, nullptr, nullptr);
  ReceiveRecord(connection, exchange.request);
  send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
  ReceiveRecord(connection, exchange.request);
  close(connection);
  close(listener);
  unlink(kQORDEXSocketPath);
  exchange.printed = Finish(client);
  return exchange;
}

// What the client prints when a service answers with `reply`.
std::string Print(const std::string& reply) { return RunAgainst(reply, kHelp).printed; }

// The request that the client sends to "sarvik", as bytes; what it prints in place of one.
std::string Request(Words words) {
  words.insert(words.begin(), {CLIENT, "sarvik"});
  const Exchange exchange = RunAgainst(Record(""), words);
  return exchange.request + exchange.printed;
}

TEST(Client, SendsTheRequestInARecordOfFixedSize) {
  EXPECT_EQ(Request({"--inject", "5"}),
            "\0\0\0\0\x0a\x06sarvik\x10\0\x1a\x0b\x0a\x06inject\x12\x01\x35"s +
                std::string(4096 - 23, '\0') + "\x17\0\0\0"s);
  // All but the argument takes 24 bytes of such a request.
  EXPECT_EQ(Request({"--inject", std::string(4095 - 24, 'x')}).substr(4096), "xxx\0\xff\x0f\0\0"s);
  const std::string empty(kRecordSize, '\0');
  EXPECT_EQ(Request({"--inject", std::string(4096 - 24, 'x')}), empty);
  Words words(15, std::string(kLongestWord, 'x'));
  words[0] = "--inject";
  EXPECT_EQ(Request(words), empty) << "2 MB";
}

TEST(Client, PrintsEachFormOfReply) {
  for (const auto& [reply, printed] : ReadCases("replies.txt")) {
    EXPECT_EQ(Print(Record(reply)), printed) << reply;
  }
}

TEST(Client, DecodesWhatArrivesInOneReceive) {
  // A message that fills the data to its last byte.
  const std::string full =
      Record("cmds { arguments: 'a' } descriptions: '" + std::string(4088, 'd') + "'");
  for (const int32_t length : {0, 4095, 4096, 4097, -1, INT32_MIN, INT32_MAX}) {
    std::string reply = full;
    reply.replace(4100, 4, reinterpret_cast<const char*>(&length), 4);
    const bool isValid = 0 <= length && length <= 4096;
    const std::string valid = length == 4096 ? "a\n" : "";
    EXPECT_EQ(Print(reply), isValid ? valid : "Invalid reply from server\n"s + kNotSent) << length;
  }
  // The link stays open, so a client that waits for the rest does not end.
  for (const std::size_t cut : {1U, 7U, 4100U, 4101U}) {
    const std::string reply = Record("cmds { arguments: 'a' }").substr(0, cut);
    EXPECT_EQ(Print(reply), cut > 4100 ? "a\n" : "");
  }
}

TEST(Client, ReportsASendToALinkThatIsBrokenAlready) {
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  const std::string path = "/data/vendor/camera/" + std::string(107 - 20, 's');
  const int listener = Bind(SOCK_STREAM, path);
  QORDEX* client = QORDEX::Create({path + "cut at 107 bytes", kConfigPath});
  close(accept(listener, nullptr, nullptr));
  QORDEXMessageString record = {};
  testing::internal::CaptureStderr();
  EXPECT_EQ(client->SendRequest(&record), kStatusLinkFailed);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\n Send Fail !!!: Broken pipe\n");
  client->Destroy();
  std::signal(SIGPIPE, handler);
  close(listener);
  unlink(path.c_str());
}

TEST(Client, ReportsASocketThatCannotBeCreated) {
  // Sanitizers need descriptors to look at an object of a kind that they have not seen before.
  const int before = dup(STDIN_FILENO);
  EXPECT_EQ(QORDEX::Create({"/nonexistent", kConfigPath}), nullptr);
  EXPECT_EQ(dup(STDIN_FILENO), before + 1) << "the socket is left open";
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

TEST(Client, KeepsWhatItPrintsFromTheServiceWhenStandardOutputIsClosed) {
  // A table longer than the buffer of a stream, so that it is written before the program ends.
  const std::string table =
      "cmds { options: 'type' arguments: 'list' } cmds { options: 'a' arguments: ['" +
      std::string(2000, 'b') + "', 'c', 'd', 'e', 'f'] }";
  for (const char* shell : {R"(exec "$@" >&-)", R"(exec "$@" <&- >&- 2>&-)"}) {
    const Words command = {"bash", "-c", shell, "bash", CLIENT, "sarvik", "--help"};
    const Exchange exchange = RunAgainst(Record(table), command);
    EXPECT_EQ(exchange.printed, "") << shell;
    EXPECT_EQ(exchange.request.size(), kRecordSize) << shell;
  }
}

TEST(Catalogue, HoldsACopyOfEachCommandUnderEachOfItsNames) {
  Catalogue catalogue;
  RegisterSarvikModule(catalogue);
  EXPECT_EQ(catalogue.size(), 6U);
  catalogue.at("moduleName: sarvik,cmdName: i").args.emplace_back("3");
  EXPECT_TRUE(catalogue.at("moduleName: sarvik,cmdName: inject").args.empty());
  EXPECT_EQ(CatalogueKey(std::string(600, 'm'), ""), "moduleName: " + std::string(499, 'm'));
  RegisterCommand(CmdOption(), catalogue);
  EXPECT_EQ(catalogue.size(), 6U) << "an entry without a module is left out";
}

TEST(ArgumentParser, WritesTheRecordOnlyWhenItAccepts) {
  char word[] = "sarvik";
  char command[] = "--inject";
  char* argv[] = {word, word, command, word, nullptr};
  const QORDEXMessageString before = {7, "data", 7};
  QORDEXMessageString record = before;
  QORDEXImpl client;
  testing::internal::CaptureStdout();
  EXPECT_EQ(client.ParseArguments(0, argv, record), kStatusUnknownCommand);
  EXPECT_EQ(client.ParseArguments(1, argv, record), kStatusNoCommandName);
  EXPECT_EQ(client.ParseArguments(2, argv, record), kStatusNoCommandName);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "No such module or command\nCommand name is error\nCommand name is error\n");
  client.Initialize({"/nonexistent", "/nonexistent"});
  EXPECT_EQ(client.ParseArguments(3, argv, record), kStatusTooFewArguments);
  EXPECT_EQ(std::memcmp(&record, &before, sizeof(record)), 0);
  EXPECT_EQ(client.ParseArguments(4, argv, record), kStatusOk);
  EXPECT_EQ(record.reserved, 0);
}

}  // namespace

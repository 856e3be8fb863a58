// The program as its user and the service see it: the real binary over the real socket.

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
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
constexpr std::size_t kRecordSize = 4104;
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

// Returns a socket that listens at `path`, and on which accept fails after 20 seconds.
int Listen(const std::string& path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {AF_UNIX, {}};
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  unlink(address.sun_path);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
    throw std::runtime_error(path);
  const timeval limit = {20, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
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

// Runs the client with the given words, and perhaps redirections, against a service that takes one
// connection, lets `serve` have it, and closes it. Returns what the client has printed on both
// streams, and its exit status if that is not 0.
std::string RunClient(const std::string& words, const std::function<void(int connection)>& serve) {
  const int listener = Listen(kQORDEXSocketPath);
  setenv("CLIENT", CLIENT, 1);
  const std::string script =
      "exec 2>&1; timeout 20 " EMULATOR " \"$CLIENT\" " + words + " || echo exit status $?";
  std::FILE* const client = popen(script.c_str(), "r");  // NOLINT(cert-env33-c): a shell is meant
  const int connection = accept(listener, nullptr, nullptr);
  if (connection < 0) throw std::runtime_error("the client does not connect");
  serve(connection);
  close(connection);
  std::string printed = Read(fileno(client), SIZE_MAX);
  pclose(client);
  close(listener);
  return printed;
}

struct Exchange {
  std::string request;  // all bytes that the client sent, up to two records
  std::string printed;  // as RunClient returns it
};

// Runs the client against a service that reads one record and answers with `reply`, or closes its
// direction of the link when that is empty. Then the client closes the link.
Exchange RunAgainst(const std::string& reply,
                    const std::string& words = "sarvik --help 2>/dev/null") {
  Exchange exchange;
  exchange.printed = RunClient(words, [&](int connection) {
    exchange.request = Read(connection, kRecordSize);
    send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
    if (reply.empty()) shutdown(connection, SHUT_WR);
    exchange.request += Read(connection, kRecordSize);
  });
  return exchange;
}

TEST(Client, SendsTheRequestInARecordOfFixedSize) {
  EXPECT_EQ(RunAgainst(Record(""), "sarvik --inject 5").request,
            "\0\0\0\0\x0a\x06sarvik\x10\0\x1a\x0b\x0a\x06inject\x12\x01\x35"s +
                std::string(4096 - 23, '\0') + "\x17\0\0\0"s);
}

TEST(Client, SendsAnEmptyMessageForARequestOf4096BytesOrMore) {
  // A request of this length has 24 bytes besides its argument.
  std::string words = "sarvik --inject " + std::string(4095 - 24, 'x');
  EXPECT_EQ(RunAgainst(Record(""), words).request.substr(4096), "xxx\0\xff\x0f\0\0"s);
  for (const std::size_t more : {1U, 100'000U}) {
    words.append(more, 'x');
    EXPECT_EQ(RunAgainst(Record(""), words).request, Record("")) << more;
  }
}

TEST(Client, PrintsEachFormOfReply) {
  for (const auto& [reply, printed] : ReadCases("replies.txt")) {
    // What stands in the reserved word does not matter.
    EXPECT_EQ(RunAgainst(Record(reply).replace(0, 4, "any ")).printed, printed) << reply;
  }
}

TEST(Client, RefusesLengthsThatNoMessageHas) {
  std::string record = Record("cmds { arguments: 'a' }");  // a message of 5 bytes
  // Field 5, which the schema does not have, fills the data to its last byte.
  record.replace(4 + 5, 4091, "\x2a\xf8\x1f" + std::string(4088, 'x'));
  const auto printed = [&](int32_t length) {
    record.replace(4100, 4, reinterpret_cast<const char*>(&length), 4);
    return RunAgainst(record).printed;
  };
  for (const int32_t length : {INT32_MIN, -1, 4097, INT32_MAX}) {
    EXPECT_EQ(printed(length),
              "Invalid reply from server\nFailed to send request: 1\nexit status 1\n")
        << length;
  }
  for (const int32_t length : {0, 4095}) EXPECT_EQ(printed(length), "") << length;
  EXPECT_EQ(printed(4096), "a\n");
}

TEST(Client, DecodesWhatArrivesInOneReceive) {
  // The link stays open, so a client that waits for the rest does not end. The message has as many
  // bytes as the request: the request's length must not count when the reply's has not arrived.
  const std::string reply = Record("cmds { arguments: 'fourteen bytes' }");
  for (const std::size_t size : {1U, 7U, 4100U}) {
    EXPECT_EQ(RunAgainst(reply.substr(0, size)).printed, "") << size;
  }
  EXPECT_EQ(RunAgainst(reply.substr(0, 4101)).printed, "fourteen bytes\n");
}

TEST(Client, ReportsAServiceThatDoesNotAnswerOrEvenRead) {
  EXPECT_EQ(RunAgainst("").printed,
            "Received nothing from server\nFailed to send request: 1\nexit status 1\n");
  const auto waitForTheRequest = [](int connection) {
    char byte = 0;
    recv(connection, &byte, 1, MSG_PEEK);
  };
  EXPECT_EQ(RunClient("sarvik --help", waitForTheRequest),
            "Failed to receive message from server\nFailed to send request: 1\nexit status 1\n");
}

TEST(Client, KeepsWhatItPrintsFromTheServiceWhenStandardOutputIsClosed) {
  // The box is larger than a stream's buffer, so it is written while the link is still open.
  const std::string reply =
      Record("cmds { options: 'type' arguments: 'string' } cmds { options: 'a' arguments: ['" +
             std::string(2000, 'b') + "', 'c', 'd', 'e', 'f'] }");
  for (const char* words : {"sarvik --help >&-", "sarvik --help <&- >&-"}) {
    const Exchange exchange = RunAgainst(reply, words);
    EXPECT_EQ(exchange.printed, "") << words;
    EXPECT_EQ(exchange.request.size(), kRecordSize) << words;
  }
}

TEST(Client, CutsTheSocketPathAt107BytesAndKeepsTheRequest) {
  std::string path = "/data/vendor/camera/";
  path.resize(107, 's');
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
  EXPECT_EQ(recv(connection, &more, 1, MSG_DONTWAIT), -1) << "the client has not closed the link";
  client->Destroy();
  EXPECT_EQ(recv(connection, &more, 1, MSG_DONTWAIT), 0) << "the link is closed";
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

TEST(Client, ReportsASocketThatCannotBeCreated) {
  // A sanitizer may open files at its first check, which the limit below would prevent.
  EXPECT_EQ(QORDEX::Create({"/nonexistent", kConfigPath}), nullptr);
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

TEST(Catalogue, HoldsEachCommandUnderEachOfItsNames) {
  Catalogue catalogue;
  catalogue["moduleName: sarvik,cmdName: i"].args = {"replaced"};
  RegisterSarvikModule(catalogue);
  CmdOption withoutModule;
  withoutModule.cmdName = "left out";
  RegisterCommand(withoutModule, catalogue);
  EXPECT_EQ(catalogue.size(), 6U);
  EXPECT_TRUE(catalogue["moduleName: sarvik,cmdName: i"].args.empty());
  EXPECT_EQ(CatalogueKey(std::string(600, 'm'), ""), "moduleName: " + std::string(499, 'm'));
}

using Words = std::vector<std::string>;

constexpr std::size_t kLongestWord = 131071;  // bytes: the longest argument that Linux accepts

// Parses a command line with a client that has no link. Returns the command of the request, or the
// status if the command line is refused. A refusal must leave the record untouched.
std::string Parse(Words words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  QORDEXImpl client;
  client.Initialize({"/nonexistent", "/nonexistent"});
  const QORDEXMessageString before = {7, "data", 7};
  QORDEXMessageString record = before;
  const int status = client.ParseArguments(static_cast<int>(words.size()), argv.data(), record);
  if (status != kStatusOk) {
    EXPECT_EQ(std::memcmp(&record, &before, sizeof(record)), 0);
    return std::to_string(status);
  }
  EXPECT_EQ(record.reserved, 0);
  QORDEXMessage request;
  EXPECT_TRUE(request.ParseFromArray(record.data, record.length));
  return request.cmds(0).options();
}

TEST(ArgumentParser, FindsTheCommandAfterTwoHyphensThatALetterFollowsDirectly) {
  for (const char* word : {"--h", "--help", "---help", "--help2", "--help-", "x--help", "--help@",
                           "--help[", "--help`", "--help{", "-x--9--@--[--`--{--help--signal"}) {
    EXPECT_EQ(Parse({"qordex", "sarvik", word}), "help") << word;
  }
  for (const std::string& word :
       Words{"", "help", "-help", "--", "--9", "-- h", std::string(kLongestWord, 'a'),
             std::string(kLongestWord, '-')}) {
    EXPECT_EQ(Parse({"qordex", "other", word}), "4") << word.substr(0, 9);
  }
  for (const std::string& word :
       Words{"--in-ject", "--Help", "--helpa", "--helpz", "--helpA", "--helpZ", "--a", "--z", "--A",
             "--Z", "--" + std::string(kLongestWord, 'a')}) {
    EXPECT_EQ(Parse({"qordex", "sarvik", word}), "6") << word.substr(0, 9);
  }
  for (const std::string& module :
       Words{"other", "Sarvik", "sarvi", "--help", "", std::string(kLongestWord, 'm')}) {
    EXPECT_EQ(Parse({"qordex", module, "--help"}), "6") << module.substr(0, 9);
  }

  EXPECT_EQ(Parse({}), "6");
  EXPECT_EQ(Parse({"qordex"}), "4");
  EXPECT_EQ(Parse({"qordex", "sarvik"}), "4");
  EXPECT_EQ(Parse({"qordex", "sarvik", "--inject"}), "10");
  EXPECT_EQ(Parse({"qordex", "sarvik", "--s"}), "10");
}

}  // namespace

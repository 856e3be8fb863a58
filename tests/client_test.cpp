// The program as its user and the service see it: the real binary over the real socket.

#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cases.h"
#include "programs.h"
#include "qordex/qordex.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"

namespace {

using std::string_literals::operator""s;

constexpr std::size_t kRecordSize = 4104;
constexpr std::size_t kLongestWord = 131071;  // that Linux hands to a program
constexpr char kConfigPath[] = "/odm/etc/camera/qordex_config.json";
constexpr char kNotSent[] = "Failed to send request: 1\nexit status 1\n";
const Words kHelp = {CLIENT, "sarvik", "--help"};

// What a service does with its one connection.
struct Script {
  std::string reply;
  bool readsRequest = true;    // before the reply
  bool waitsForClient = true;  // leaves closing the link to the client
};

struct Exchange {
  std::string request;  // all bytes that the client sent, up to two records
  std::string printed;  // as Finish gives it
};

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

Exchange RunAgainst(const Script& script, const Words& command) {
  Exchange exchange;
  const int listener = Bind(SOCK_STREAM, kQORDEXSocketPath);
  const pid_t client = Start(command);
  const int connection = accept(listener, nullptr, nullptr);
  if (script.readsRequest) ReceiveRecord(connection, exchange.request);
  send(connection, script.reply.data(), script.reply.size(), MSG_NOSIGNAL);
  if (script.waitsForClient) ReceiveRecord(connection, exchange.request);
  close(connection);
  close(listener);
  unlink(kQORDEXSocketPath);
  exchange.printed = Finish(client);
  return exchange;
}

// What the client prints when a service answers with `reply`.
std::string Print(const std::string& reply) { return RunAgainst({reply}, kHelp).printed; }

// The request that the client sends to "sarvik", as bytes; what it prints in place of one.
std::string Request(Words words) {
  words.insert(words.begin(), {CLIENT, "sarvik"});
  const Exchange exchange = RunAgainst({Record("")}, words);
  return exchange.request + exchange.printed;
}

TEST(Client, PrintsItsUsageWithoutTouchingTheSocket) {
  for (const Words& command : {Words{CLIENT}, {CLIENT, "-help"}, {CLIENT, "--help"}}) {
    EXPECT_EQ(Finish(Start(command)),
              "用法: qordex [模块] [--参数1] [参数2] ...\n模块:\n1. sarvik, 可以用 qordex sarvik "
              "[模块] [--参数1] [参数2] 执行指令, 或者 qordex sarvik --help 查询具体指令\n");
  }
  for (const std::string& word : {"sarvik"s, "--HELP"s, "---help"s, "help"s, ""s, "--help2"s,
                                  "x--help"s, "--help\n"s, std::string(kLongestWord, '-')}) {
    EXPECT_EQ(Finish(Start({CLIENT, word})), "") << word;
  }
}

TEST(Client, TurnsACommandLineIntoARequestOrRejectsIt) {
  for (const Case& c : ReadCases("commandlines.txt")) {
    std::istringstream line(c.input);
    Words command = {CLIENT};
    for (std::string word; line >> word;) command.push_back(word);
    const Exchange exchange = RunAgainst({Record("")}, command);
    EXPECT_EQ(exchange.printed, exchange.request.empty() ? c.expected : "") << c.input;
    if (exchange.request.empty()) continue;
    EXPECT_EQ(exchange.request, Record("moduleName: 'sarvik' moduleType: SARVIK " + c.expected));
  }
}

TEST(Client, SurvivesLongCommandLines) {
  const std::string help = Request({"--help"});
  std::string pairs;
  while (pairs.size() < 130000) pairs += "-a";
  EXPECT_EQ(Request({pairs + "--help"}), help);
  // Around the end of the first piece of a word that the expression sees.
  for (std::size_t before = 245; before < 260; ++before) {
    EXPECT_EQ(Request({std::string(before, 'x') + "--help9"}), help) << before;
  }
  const std::string letters(kLongestWord - 2, 'a');
  const std::string unknown = "No such module or command\nCommand error: 6\nexit status 6\n";
  EXPECT_EQ(Request({"--" + letters}), unknown);
  EXPECT_EQ(RunAgainst({Record("")}, {CLIENT, letters, "--help"}).printed, unknown);
  for (const std::string& nameless : {letters, std::string(kLongestWord, '-'), ""s}) {
    EXPECT_EQ(Request({nameless}), "Command name is error\nCommand error: 4\nexit status 4\n");
  }
}

TEST(Client, SendsTheRequestInARecordOfFixedSize) {
  EXPECT_EQ(Request({"--inject", "5"}),
            "\0\0\0\0\x0a\x06sarvik\x10\0\x1a\x0b\x0a\x06inject\x12\x01\x35"s +
                std::string(4096 - 23, '\0') + "\x17\0\0\0"s);
  EXPECT_EQ(Request({"--help", "", "\xff\n"}).substr(16, 14),
            "\x0a\x04help\x12\0\x12\x02\xff\n\0\0"s);
  // All but the argument takes 24 bytes of such a request.
  EXPECT_EQ(Request({"--inject", std::string(4095 - 24, 'x')}).substr(4096), "xxx\0\xff\x0f\0\0"s);
  const std::string empty(kRecordSize, '\0');
  EXPECT_EQ(Request({"--inject", std::string(4096 - 24, 'x')}), empty);
  Words words(15, std::string(kLongestWord, 'x'));
  words[0] = "--inject";
  EXPECT_EQ(Request(words), empty) << "2 MB";
}

TEST(Client, PrintsEachFormOfReply) {
  for (const Case& c : ReadCases("replies.txt")) EXPECT_EQ(Print(Record(c.input)), c.expected);
}

TEST(Client, DecodesWhatArrivesInOneReceive) {
  // A message that fills the data to its last byte.
  const std::string full =
      Record("cmds { arguments: 'a' } descriptions: '" + std::string(4088, 'd') + "'");
  for (const int32_t length : {0, 4095, 4096, 4097, -1, INT32_MIN, INT32_MAX}) {
    std::string reply = full;
    reply.replace(4100, 4, reinterpret_cast<const char*>(&length), 4);
    const bool isValid = 0 <= length && length <= 4096;
    EXPECT_EQ(Print(reply), !isValid         ? "Invalid reply from server\n"s + kNotSent
                            : length == 4096 ? "a\n"
                                             : "")
        << length;
  }
  for (const bool waitsForClient : {false, true}) {
    for (const std::size_t cut : {1U, 7U, 4100U, 4101U}) {
      const Script script = {Record("cmds { arguments: 'a' }").substr(0, cut), true,
                             waitsForClient};
      EXPECT_EQ(RunAgainst(script, kHelp).printed, cut > 4100 ? "a\n" : "");
    }
  }
}

TEST(Client, ReportsAServiceThatHangsUp) {
  EXPECT_EQ(RunAgainst({"", true, false}, kHelp).printed,
            "Received nothing from server\n"s + kNotSent);
  // Whether the link breaks before or after the request is sent is a matter of time.
  const std::string before = "\n Send Fail !!!: Broken pipe\n"s + kNotSent;
  const std::string after = "Failed to receive message from server\n"s + kNotSent;
  for (int i = 0; i < 20; ++i) {
    const std::string printed = RunAgainst({"", false, false}, kHelp).printed;
    EXPECT_TRUE(printed == before || printed == after) << printed;
  }
}

TEST(Client, ReportsASendToALinkThatIsBrokenAlready) {
  std::signal(SIGPIPE, SIG_IGN);
  const std::string path = "/data/vendor/camera/" + std::string(107 - 20, 's');
  const int listener = Bind(SOCK_STREAM, path);
  QORDEX* client = QORDEX::Create({path + "cut at 107 bytes", kConfigPath});
  ASSERT_NE(client, nullptr);
  close(accept(listener, nullptr, nullptr));
  QORDEXMessageString record = {};
  testing::internal::CaptureStderr();
  EXPECT_EQ(client->SendRequest(&record), kStatusLinkFailed);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\n Send Fail !!!: Broken pipe\n");
  client->Destroy();
  close(listener);
  unlink(path.c_str());
}

TEST(Client, ReportsALinkThatCannotBeSetUp) {
  const auto expectFailure = [](const std::string& reason) {
    EXPECT_EQ(Finish(Start({CLIENT, "sarvik", "no command"})),
              "\n Connect fail! \n: " + reason +
                  "\nFailed to initialize QORDEXImpl object\nFailed to create qordex\n");
  };
  expectFailure("No such file or directory");
  close(Bind(SOCK_STREAM, kQORDEXSocketPath));
  expectFailure("Connection refused");
  // Without this capability permissions hold for root too.
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
  chmod(kQORDEXSocketPath, 0);
  expectFailure("Permission denied");
  unlink(kQORDEXSocketPath);
  std::ofstream file(kQORDEXSocketPath);
  expectFailure("Connection refused");
  unlink(kQORDEXSocketPath);
}

TEST(Client, ReportsASocketThatCannotBeCreated) {
  // Sanitizers need descriptors to look at an object of a kind that they have not seen before.
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

TEST(Client, SurvivesAStandardOutputThatIsGone) {
  // A table longer than the buffer of a stream, so that it is written before the program ends.
  const std::string row(2000, 'b');
  const Script script = {
      Record("cmds { options: 'type' arguments: 'list' } cmds { options: 'a' "
             "arguments: ['" +
             row + "', 'c', 'd', 'e', 'f'] }")};
  for (const char* shell :
       {"exec \"$@\" sarvik --help >&-", "set -o pipefail; \"$@\" sarvik --help | true"}) {
    const Exchange exchange = RunAgainst(script, {"bash", "-c", shell, "bash", CLIENT});
    EXPECT_EQ(exchange.printed, "") << shell;
    EXPECT_EQ(exchange.request.size(), kRecordSize) << "what was printed reached the service";
  }
}

// What a run of the client sends to the system log: a line at most.
std::string Log() {
  const int log = Bind(SOCK_DGRAM, "/dev/log");
  EXPECT_EQ(Print(Record("cmds { arguments: 'a' }")), "a\n");
  std::string line(2048, '\0');
  const ssize_t count = recv(log, line.data(), line.size(), MSG_DONTWAIT);
  EXPECT_EQ(recv(log, nullptr, 0, MSG_DONTWAIT), -1) << "more than one line";
  close(log);
  unlink("/dev/log");
  return line.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
}

TEST(Client, LogsOneLineForAConfigurationThatDoesNotLoad) {
  for (const std::string& broken : {"none"s, ""s, "{"s, std::string(1000000, '[')}) {
    if (broken != "none") std::ofstream(kConfigPath) << broken;
    EXPECT_THAT(Log(), testing::MatchesRegex("<11>.*\\[SARVIKSYS\\]: configloadjson.cpp:[0-9]+ "
                                             "Create\\(\\) Failed to initialize ConfigLoadJson"));
  }
  std::ofstream(kConfigPath) << "{}";
  EXPECT_EQ(Log(), "");
  unlink(kConfigPath);
}

TEST(Client, TakesTheLogThresholdFromTheProperty) {
  for (const char* silent : {"7", "0x7", "010", "2147483647"}) {
    setenv("persist.vendor.camera.sarviksystem.loglevel", silent, 1);
    EXPECT_EQ(Log(), "") << silent;
  }
  for (const char* other :
       {"6", "-1", "", "7x", "4294967303", "2147483648", "9999999999999999999"}) {
    setenv("persist.vendor.camera.sarviksystem.loglevel", other, 1);
    EXPECT_NE(Log(), "") << other;
  }
  unsetenv("persist.vendor.camera.sarviksystem.loglevel");
}

}  // namespace

// The configuration loader and the log that it writes to.

#include <android/log.h>
#include <cutils/properties.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <regex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "cases.h"
#include "config/configloadjson.h"
#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"
#include "config/jsondocument.h"
#include "log/sarviksystemlog.h"

namespace {

using std::string_literals::operator""s;

std::string logged;  // without the line numbers of the loader

std::string TakeLog() { return std::exchange(logged, ""); }

// A line that the loader has logged, without the number of the line in its source. Checks that the
// source does log there.
std::string WithoutLineNumber(const std::string& line) {
  std::smatch parts;
  if (!std::regex_match(line, parts, std::regex("(config[a-z.]*):([0-9]+)( .*)"))) return line;
  const std::string folder = parts[1] == "configloadfactory.h" ? "interface/" : "";
  std::ifstream source(CASES "/../../config/" + folder + parts[1].str());
  std::string text;
  for (int i = std::stoi(parts[2]); i > 0; --i) std::getline(source, text);
  EXPECT_TRUE(std::regex_search(text, std::regex("SARVIK_LOG|return LogIf"))) << line;
  return parts[1].str() + parts[3].str();
}

constexpr char kThreshold[] = "persist.vendor.camera.sarviksystem.loglevel";
const std::string kNotCreated = "configloadjson.cpp Create() Failed to initialize ConfigLoadJson\n";
const std::string kGetObject = "configloadjson.cpp GetObject() ";

// Each source file's copy of the log function reads the threshold at its first message. This file's
// reads the default; the loader's will read the highest at which errors are logged.
class Thresholds : public testing::Environment {
 public:
  void SetUp() override {
    SarvikSystemLog(3, "f", 1, "F", "dropped");
    setenv(kThreshold, "6", 1);
  }
};
const auto* const thresholds = testing::AddGlobalTestEnvironment(new Thresholds);

// A configuration with the given text, in memory for as long as the test program runs. Zero bytes
// after the text make it as large as asked for.
ConfigLoadCreateData Json(const std::string& text, off_t size = 0) {
  const int fd = memfd_create("configuration", 0);
  EXPECT_EQ(ftruncate(fd, size), 0);
  EXPECT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  return {kConfigFileTypeJson, "/proc/self/fd/" + std::to_string(fd)};
}

int LowestFreeDescriptor() {
  const int fd = dup(STDIN_FILENO);
  close(fd);
  return fd;
}

std::string Repeat(const std::string& text, int count) {
  std::string repeated;
  while (count-- > 0) repeated += text;
  return repeated;
}

std::unique_ptr<ConfigLoad> Load(const std::string& text) {
  return std::unique_ptr<ConfigLoad>(CreateObject(Json(text)));
}

std::string Text(int32_t value) { return std::to_string(value); }
std::string Text(const std::string& value) { return '"' + value + '"'; }
std::string Text(float value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.9g", static_cast<double>(value));
  return text;
}
template <typename T>
std::string Text(const std::vector<T>& values) {
  std::string text;
  for (const T& value : values) text += (text.empty() ? "" : ", ") + Text(value);
  return "[" + text + "]";
}
// A name, the number of a type and a value.
std::string Text(const Config& config) {
  const Data& data = config.data;
  EXPECT_TRUE(data.stringValue.empty() || data.type == DataType::kString);
  const std::string name = config.name + ":" + Text(static_cast<int32_t>(data.type)) + "=";
  if (data.type == DataType::kBool) return name + (data.boolValue ? "true" : "false");
  if (data.type == DataType::kInt) return name + Text(data.intValue);
  if (data.type == DataType::kFloat) return name + Text(data.floatValue);
  return name + Text(data.stringValue);
}

// What the six typed getters find at the top level or, with a handle, in an object, where each
// failure is logged.
template <typename... Handle>
std::string CallGetters(const ConfigLoad& loader, const std::string& key, Handle... object) {
  std::string found;
  std::string log;
  const auto add = [&](const std::string& getter, int32_t status, const auto& value,
                       const auto& fallback, const auto& withoutStatus) {
    const bool isTopLevel = sizeof...(object) == 0;
    if (status == kConfigOk) {
      found += getter + " " + Text(value) + "\n";
      EXPECT_TRUE(!isTopLevel || withoutStatus == value) << getter;
      return;
    }
    EXPECT_EQ(status, kConfigError) << getter;
    EXPECT_EQ(value, fallback) << getter;
    EXPECT_TRUE(!isTopLevel || withoutStatus == std::decay_t<decltype(value)>()) << getter;
    if (!isTopLevel && !key.empty())
      log += "configloadjson.cpp " + getter + "() Failed to get key: " + key + "\n";
  };
  int32_t i = 1;
  float f = 1.0F;
  std::string s = "before";
  std::vector<int32_t> is = {1};
  std::vector<float> fs = {1.0F};
  std::vector<std::string> ss = {"before"};
  add("GetInt", loader.GetInt(object..., key, i, -7), i, -7, loader.GetInt(key));
  add("GetFloat", loader.GetFloat(object..., key, f, -7.5F), f, -7.5F, loader.GetFloat(key));
  add("GetString", loader.GetString(object..., key, s, "-"), s, "-", loader.GetString(key));
  add("GetIntArray", loader.GetIntArray(object..., key, is), is, decltype(is)(),
      loader.GetIntArray(key));
  add("GetFloatArray", loader.GetFloatArray(object..., key, fs), fs, decltype(fs)(),
      loader.GetFloatArray(key));
  add("GetStringArray", loader.GetStringArray(object..., key, ss), ss, decltype(ss)(),
      loader.GetStringArray(key));
  EXPECT_EQ(TakeLog(), log);
  return found;
}

// Runs first: memory that other tests freed would serve as room. Under the sanitizers no limit
// leaves room for the process itself.
#ifndef __SANITIZE_ADDRESS__
TEST(ConfigLoad, RefusesWhatDoesNotFitIntoMemory) {
  const auto loader = Load(R"({"k": 1})");
  const ConfigLoadCreateData large =
      Json("[" + Repeat("[[{}]], ", 250'000) + '"' + Repeat("x", 3'000'000) + "\"]");
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  for (rlim_t room = 0; room < 40 << 20; room += 2 << 20) {
    const pid_t child = fork();
    if (child == 0) {
      const rlim_t size = (pages * static_cast<rlim_t>(getpagesize())) + room;
      const rlimit limit = {size, size};
      setrlimit(RLIMIT_AS, &limit);
      // An emulator does not hold the program to the limit.
      const bool isLimited = std::malloc(static_cast<std::size_t>(size)) == nullptr;
      const int32_t status = loader->Initialize(large);
      if (status == kConfigOk && room == 0 && isLimited) _exit(1);    // it cannot have loaded
      if (status != kConfigOk && loader->GetInt("k") != 1) _exit(2);  // the earlier value is lost
      _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << room;
    EXPECT_TRUE(WEXITSTATUS(status) == kConfigOk || WEXITSTATUS(status) == kConfigError)
        << "status " << WEXITSTATUS(status) << " with room " << room;
  }
}
#endif

TEST(ConfigLoad, ReadsEachKindOfValueOnlyWithTheGetterForIt) {
  for (const auto& [value, found] : ReadCases("values.txt")) {
    SCOPED_TRACE(value);
    const std::string object = "{\"k\": " + value + R"(, "k": 9, "": 9})";
    const auto flat = Load(object);
    const auto nested = Load("{\"object\": " + object + "}");
    ASSERT_TRUE(flat != nullptr && nested != nullptr);
    EXPECT_EQ(CallGetters(*flat, "k"), found);
    EXPECT_EQ(CallGetters(*nested, "k", nested->GetObject("object")), found);
  }
}

TEST(ConfigLoad, LooksUpKeysByteForByteToTheirFirstZero) {
  const auto loader =
      Load(R"({"": 1, "name": 5, "o": {"": 1}, "s": "x", "0123456789abcdef": ["x"]})");
  for (const char* key : {"", "Name", "nam", "names"}) {
    EXPECT_EQ(CallGetters(*loader, key), "");
    EXPECT_EQ(CallGetters(*Load(R"(["nam", 5])"), key), "");
    for (const void* object :
         {loader->GetObject("o"), loader->GetObject("name"), static_cast<const void*>(nullptr)}) {
      EXPECT_EQ(CallGetters(*loader, key, object), "");
    }
  }
  EXPECT_EQ(loader->GetInt("name\0x"s), 5);
  EXPECT_EQ(loader->GetInt("\0x"s), 1) << "such a key is not empty";
  std::string value = "s";
  EXPECT_EQ(loader->GetString(value, value, "default"), 0) << "the result may be the key";
  std::vector<std::string> values = {"0123456789abcdef"};
  EXPECT_EQ(loader->GetStringArray(values[0], values), 0) << "or hold it";
}

TEST(ConfigLoad, HandsOutHandlesToValuesOfAnyKindAndNullForAMissingKey) {
  const auto loader = Load(R"({"n": 5, "o": {"x": {"y": 1}}})");
  const void* const untouched = loader.get();
  const void* handle = untouched;
  EXPECT_EQ(loader->GetObject(""), nullptr);
  EXPECT_EQ(loader->GetObject("", &handle), 4);
  EXPECT_EQ(loader->GetObject(nullptr, "", &handle), 4);
  EXPECT_EQ(handle, untouched);
  EXPECT_EQ(TakeLog(),
            Repeat(kGetObject + "key is empty\n", 2) + kGetObject + "Failed to get key: \n");
  EXPECT_EQ(loader->GetObject("n", &handle), 0);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(loader->GetObject(loader->GetObject("o"), "x", &handle), 0);
  EXPECT_EQ(CallGetters(*loader, "y", handle), "GetInt 1\n");
  EXPECT_EQ(loader->GetObject(handle, "y", &handle), 0) << "a number has a handle, too";
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(loader->GetObject("m", &handle), 12);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: m\n");
  for (const void* object :
       {static_cast<const void*>(nullptr), loader->GetObject("n"), loader->GetObject("o")}) {
    handle = untouched;
    EXPECT_EQ(loader->GetObject(object, "m", &handle), 4);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(TakeLog(), kGetObject + "Failed to get key: m\n");
  }
}

TEST(ConfigLoad, ReadsArraysOfObjectsIntoRows) {
  for (const auto& [value, expected] : ReadCases("rows.txt")) {
    std::string rows;
    for (const auto& row : Load("{\"k\": " + value + "}")->GetArrayObject("k")) {
      for (const Config& config : row) rows += Text(config) + " ";
      rows.back() = '\n';
    }
    EXPECT_EQ(rows, expected) << value;
  }
  EXPECT_EQ(Text(Config("n", "text")) + Text(Config("n", 0)), R"(n:3="text"n:1=0)");
  static_assert(!std::is_constructible_v<Data, const void*>);
  EXPECT_TRUE(Load("[{}]")->GetArrayObject("k").empty());
  EXPECT_TRUE(Load("{}")->GetArrayObject("").empty());
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: k\n" + kGetObject + "key is empty\n");
}

TEST(ConfigLoad, LoadsStrictJsonUpToItsFirstZeroByte) {
  const auto loader = Load("{}");
  const std::string deep = Repeat("[", 1'000'000) + Repeat("]", 1'000'000);
  const std::string deepObject = Repeat("{\"\":", 1'000'000) + "1" + Repeat("}", 1'000'000);
  const std::string zeros = Repeat("0", 1'000'000);
  for (const std::string& text : {"{}"s, " [1]\n\n"s, "-12345678901234567"s, "null\0x"s,
                                  "\"\xff\""s, deep, deepObject, '"' + zeros + '"'}) {
    EXPECT_EQ(loader->Initialize(Json(text)), kConfigOk) << text.substr(0, 20);
  }
  for (const std::string& text : {""s, " \n"s, "\xef\xbb\xbf{}"s, "{} {}"s, "[1,]"s, "{} //"s,
                                  "NaN"s, "\0{}"s, "0e309"s, "1" + zeros, "0." + Repeat(zeros, 200),
                                  Repeat("[", 300) + "1," + Repeat("]", 300), deepObject + "//"}) {
    EXPECT_EQ(loader->Initialize(Json(text)), kConfigError) << text.substr(0, 20);
  }
  EXPECT_EQ(TakeLog(), "");
}

TEST(JsonDocument, ShortensNegativeExponents) {
  for (const auto& [text, shortened] : std::vector<std::pair<std::string, std::string>>{
           {"[1E-123456789012]", "[1E-12345678    ]"},
           {"1e-000123456789", "1e-00012345678 "},
           {"[1e+123456789, 1e-123456789]", "[1e+123456789, 1e-12345678 ]"},
           {"-123456789", "-123456789"},
           {"[-1, 1e-, 1e-123456789, 2e-123456789 ]", "[-1, 1e-, 1e-12345678 , 2e-12345678  ]"},
           {R"(["1e-123456789", 1e-123456789])", R"(["1e-123456789", 1e-12345678 ])"},
           {R"(["\"1e-123456789", 1e-123456789])", R"(["\"1e-123456789", 1e-12345678 ])"},
           {R"(["\\", 1e-123456789])", R"(["\\", 1e-12345678 ])"}}) {
    EXPECT_EQ(qordex::ShortenNegativeExponents(text).value_or(text), shortened);
  }
}

TEST(ConfigLoad, KeepsItsValuesWhenItIsInitialisedAgainInVain) {
  const auto loader = Load(R"({"k": 1})");
  for (const auto& [data, status] : std::vector<std::pair<ConfigLoadCreateData, int32_t>>{
           {{kConfigFileTypeJson, "/nonexistent"}, 12},
           {{kConfigFileTypeJson, "/"}, 4},
           {{kConfigFileTypeJson, "broken"}, 4},
           {Json("{}", std::numeric_limits<off_t>::max()), 4},
           {Json("{"), 4}}) {
    const int lowestFree = LowestFreeDescriptor();
    EXPECT_EQ(loader->Initialize(data), status) << data.filePath;
    EXPECT_EQ(LowestFreeDescriptor(), lowestFree) << "the file is closed";
    EXPECT_EQ(loader->GetInt("k"), 1);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(CreateObject(data), nullptr);
    EXPECT_EQ(TakeLog(), kNotCreated);
  }
  EXPECT_EQ(loader->Initialize({kConfigFileTypeJson, "stream"}), kConfigOk);
  EXPECT_EQ(loader->GetInt("k"), 2);
}

TEST(ConfigLoad, RefusesOtherFileTypes) {
  for (const int32_t type : {-1, 1}) {
    const ConfigLoadCreateData data = {type, Json("{}").filePath};
    EXPECT_EQ(CreateObject(data), nullptr);
    EXPECT_EQ(ConfigLoadJson().Initialize(data), kConfigError);
    EXPECT_EQ(ConfigLoadJson::Create(data), nullptr);
    const std::string refused =
        "configloadjson.cpp Initialize() Error file type: " + std::to_string(type) + "\n";
    EXPECT_EQ(TakeLog(), "configloadfactory.h CreateObject() Error fileType\n" + refused + refused +
                             kNotCreated);
  }
}

// Overrides the getters with a status: every key gives the values below.
class Overriding : public ConfigLoadJson {
 public:
  using ConfigLoadJson::GetFloat, ConfigLoadJson::GetFloatArray, ConfigLoadJson::GetInt;
  using ConfigLoadJson::GetIntArray, ConfigLoadJson::GetString, ConfigLoadJson::GetStringArray;
  using Key = const std::string&;
  using Ints = std::vector<int32_t>;
  using Floats = std::vector<float>;
  using Texts = std::vector<std::string>;
  int32_t GetInt(Key, int32_t& v, int32_t) const override { return Give(5, v); }
  int32_t GetFloat(Key, float& v, float) const override { return Give(2.5F, v); }
  int32_t GetString(Key, std::string& v, std::string) const override { return Give("x", v); }
  int32_t GetIntArray(Key, Ints& v) const override { return Give(Ints{5}, v); }
  int32_t GetFloatArray(Key, Floats& v) const override { return Give(Floats{5}, v); }
  int32_t GetStringArray(Key, Texts& v) const override { return Give(Texts{"x"}, v); }
  int32_t GetObject(Key, const void** handle) const override { return Give(this, *handle); }
  const void* GetObject(Key) const override { return rows; }
  int32_t GetObject(const void*, Key, const void**) const override { return kConfigError; }

  const void* rows = nullptr;

 private:
  template <typename Given, typename Result>
  static int32_t Give(const Given& given, Result& value) {
    value = given;
    return kConfigOk;
  }
};

TEST(ConfigLoad, GivesWithoutAStatusWhatAnOverridingClassGivesWithOne) {
  Overriding overriding;
  EXPECT_EQ(overriding.Initialize(Json(R"({"rows": [{"a": 1}]})")), kConfigOk);
  overriding.ConfigLoadJson::GetObject("rows", &overriding.rows);
  EXPECT_EQ(CallGetters(overriding, "k"),
            "GetInt 5\nGetFloat 2.5\nGetString \"x\"\nGetIntArray [5]\nGetFloatArray [5]\n"
            "GetStringArray [\"x\"]\n");
  EXPECT_EQ(overriding.ConfigLoadJson::GetObject("k"), &overriding);
  EXPECT_EQ(overriding.GetArrayObject("k").size(), 1U);
}

TEST(Log, WritesBaseNameLineFunctionAndMessage) {
  SARVIK_LOG_ERROR("100%s", "%d");
  EXPECT_EQ(TakeLog(), "config_test.cpp:" + std::to_string(__LINE__ - 1) + " TestBody() 100%d\n");
  for (const char* file : {"/a/b/", "", "name", "/name"})
    SarvikSystemLog(6, file, -1, "F", "%s", "");
  EXPECT_EQ(TakeLog(), ":-1 F() \n:-1 F() \nname:-1 F() \nname:-1 F() \n");
}

TEST(Log, CutsLinesAt1023Bytes) {
  for (const std::size_t length : {1015U, 1016U, 1017U, 1022U, 1023U, 1024U, 5000U}) {
    const std::string text(length, 'x');
    SarvikSystemLog(6, "f", 1, "F", "%s", text.c_str());
    EXPECT_EQ(TakeLog(), ("f:1 F() " + text).substr(0, 1023) + "\n");
    SarvikSystemLog(6, text.c_str(), 1, "F", "message");
    EXPECT_EQ(TakeLog(), (text + ":1 F() message").substr(0, 1023) + "\n");
  }
}

TEST(Log, KeepsTheThresholdOfItsFirstMessage) {
  SarvikSystemLog(4, "f", 1, "F", "m");
  SarvikSystemLog(3, "f", 1, "F", "below");
  setenv(kThreshold, "7", 1);
  SARVIK_LOG_ERROR("written all the same");
  unsetenv(kThreshold);
  EXPECT_EQ(TakeLog().find("f:1 F() m\nconfig_test.cpp:"), 0U);
}

struct PropertyCase {
  const char* text;
  int32_t value;
};

TEST(Property, IsAnIntegerOf32BitsOrTheDefault) {
  constexpr int32_t kDefault = 5;
  unsetenv(kThreshold);
  EXPECT_EQ(property_get_int32(kThreshold, kDefault), kDefault);
  // The first sets errno, which the others must not take for their own.
  for (const PropertyCase& c : {PropertyCase{"9223372036854775808", kDefault},
                                {" 6", 6},
                                {"0x7", 7},
                                {"010", 8},
                                {"2147483647", INT32_MAX},
                                {"-2147483648", INT32_MIN},
                                {"", kDefault},
                                {"7 ", kDefault},
                                {"2147483648", kDefault},
                                {"-2147483649", kDefault}}) {
    setenv(kThreshold, c.text, 1);
    EXPECT_EQ(property_get_int32(kThreshold, kDefault), c.value) << c.text;
  }
  unsetenv(kThreshold);
}

}  // namespace

// Replaces the platform's function: from a static library the linker takes only what the program
// does not define.
int __android_log_print(int priority, const char* tag, const char* format, ...) {
  EXPECT_EQ(priority, ANDROID_LOG_ERROR);
  EXPECT_STREQ(tag, "[SARVIKSYS]");
  EXPECT_STREQ(format, "%s");
  va_list arguments;
  va_start(arguments, format);
  logged += WithoutLineNumber(va_arg(arguments, const char*)) + "\n";
  va_end(arguments);
  return 1;
}

// Replaces libc's. The file "stream" has no size and ends after two blocks: the value 2 for the key
// "k", filled up with spaces. "broken" is like it, but reading on after the two blocks fails.
extern "C" FILE* fopen(const char* filename, const char* modes) {
  static bool isBroken;
  static int blocks;
  isBroken = filename == "broken"s;
  blocks = 0;
  if (!isBroken && filename != "stream"s) {
    const int flags = modes[0] == 'w' ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY;
    return fdopen(open(filename, flags, 0666), modes);
  }
  const auto read = [](void* /*cookie*/, char* buffer, std::size_t size) -> ssize_t {
    ++blocks;
    if (blocks > 2) return isBroken ? -1 : 0;
    const std::string text = blocks == 1 ? R"({"k":)" : "2}";
    std::memset(buffer, ' ', size);
    text.copy(buffer, size);
    return static_cast<ssize_t>(size);
  };
  return fopencookie(nullptr, modes, {read, nullptr, nullptr, nullptr});
}

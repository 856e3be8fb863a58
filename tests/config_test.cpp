// The configuration loader, and the log and the property that it uses.

#include <android/log.h>
#include <cutils/properties.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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
#include "log/sarviksystemlog.h"

namespace {

using std::string_literals::operator""s;
using Ints = std::vector<int32_t>;
using Floats = std::vector<float>;
using Texts = std::vector<std::string>;

std::string logged;  // since the last TakeLog, without the loader's line numbers

std::string TakeLog() { return std::exchange(logged, ""); }

constexpr char kThreshold[] = "persist.vendor.camera.sarviksystem.loglevel";
const std::string kNotCreated = "configloadjson.cpp Create() Failed to initialize ConfigLoadJson\n";
const std::string kGetObject = "configloadjson.cpp GetObject() ";

// Each source file's copy of the log function reads the threshold at its first message. The copy in
// this file reads the default, 4. The loader's copies read 6, the highest at which errors are
// logged.
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
  return {0, "/proc/self/fd/" + std::to_string(fd)};  // 0 is JSON: callers may write the number
}

std::string Repeat(const std::string& text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
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
template <typename T>
std::string Text(const std::vector<T>& values) {
  std::string text;
  for (const T& value : values) text += (text.empty() ? "" : ", ") + Text(value);
  return "[" + text + "]";
}

// Calls the six typed getters at the top level or, if `object` is a handle, in that object. Returns
// a line for each that finds a value. Expects a log line for each that fails in an object.
template <typename... Handle>
std::string CallGetters(const ConfigLoad& loader, const std::string& key, Handle... object) {
  constexpr bool kIsTopLevel = sizeof...(object) == 0;
  std::string found;
  std::string log;
  // `value` is the variable that the getter with a status has overwritten.
  const auto add = [&](const std::string& getter, int32_t status, const auto& value,
                       const auto& fallback, const auto& withoutStatus) {
    using Result = std::decay_t<decltype(value)>;
    if (kIsTopLevel) {
      EXPECT_EQ(withoutStatus, status == kConfigOk ? value : Result()) << getter;
    }
    if (status == kConfigOk) {
      found += getter + " " + Text(value) + "\n";
      return;
    }
    EXPECT_EQ(status, kConfigError) << getter;
    EXPECT_EQ(value, fallback) << getter;
    if (kIsTopLevel || key.empty()) return;
    log += "configloadjson.cpp " + getter + "() Failed to get key: " + key + "\n";
  };
  int32_t i = 1;
  float f = 1.0F;
  std::string s = "before";
  Ints ints = {1};
  Floats floats = {1.0F};
  Texts texts = {"before"};
  add("GetInt", loader.GetInt(object..., key, i, -7), i, -7, loader.GetInt(key));
  add("GetFloat", loader.GetFloat(object..., key, f, -7.5F), f, -7.5F, loader.GetFloat(key));
  add("GetString", loader.GetString(object..., key, s, "-"), s, "-", loader.GetString(key));
  add("GetIntArray", loader.GetIntArray(object..., key, ints), ints, Ints(),
      loader.GetIntArray(key));
  add("GetFloatArray", loader.GetFloatArray(object..., key, floats), floats, Floats(),
      loader.GetFloatArray(key));
  add("GetStringArray", loader.GetStringArray(object..., key, texts), texts, Texts(),
      loader.GetStringArray(key));
  EXPECT_EQ(TakeLog(), log);
  return found;
}

// The sanitizers need more address space than any limit allows.
#ifndef __SANITIZE_ADDRESS__

// Loads `large` with `room` bytes of memory more than the process has, and ends the process. With
// too little, the loader must return a status and keep its values.
void LoadWithLittleMemory(ConfigLoad& loader, const ConfigLoadCreateData& large, rlim_t room) {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlim_t size = pages * static_cast<rlim_t>(getpagesize()) + room;
  const rlimit limit = {size, size};
  if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(EXIT_FAILURE);
  const int32_t status = loader.Initialize(large);
  if (status != kConfigOk && loader.GetInt("k") != 1) _exit(EXIT_FAILURE);  // its value is lost
  _exit(EXIT_SUCCESS);
}

// Runs first, because memory that other tests have freed would not count against the limit.
TEST(ConfigLoad, RefusesWhatDoesNotFitIntoMemory) {
  const auto loader = Load(R"({"k": 1})");
  const ConfigLoadCreateData large =
      Json("[" + Repeat("[[{}]], ", 250'000) + '"' + Repeat("x", 3'000'000) + "\"]");
  constexpr rlim_t kMegabyte = 1 << 20;
  for (rlim_t room = 0; room < 40 * kMegabyte; room += 2 * kMegabyte) {
    EXPECT_EXIT(LoadWithLittleMemory(*loader, large, room), testing::ExitedWithCode(0), "") << room;
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
  for (const char* key : {"", "Name", "nam", "names", "%s"}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(CallGetters(*loader, key), "");
    EXPECT_EQ(CallGetters(*Load(R"(["nam", 5])"), key), "");
    for (const void* object :
         {loader->GetObject("o"), loader->GetObject("name"), static_cast<const void*>(nullptr)}) {
      EXPECT_EQ(CallGetters(*loader, key, object), "");
    }
  }
  EXPECT_EQ(loader->GetInt("name\0x"s), 5);
  EXPECT_EQ(loader->GetInt("\0x"s), 1) << "such a key is an empty name";
  std::string value = "s";
  EXPECT_EQ(loader->GetString(value, value, "default"), kConfigOk) << "the result may be the key";
  std::vector<std::string> values = {"0123456789abcdef"};  // too long for the string itself
  EXPECT_EQ(loader->GetStringArray(values[0], values), kConfigOk) << "the result may hold the key";
}

TEST(ConfigLoad, HandsOutHandlesToValuesOfAnyKindAndNullForAMissingKey) {
  const auto loader = Load(R"({"n": null, "o": {"x": {"y": 1}}})");
  const void* const untouched = loader.get();
  const void* handle = untouched;
  EXPECT_EQ(loader->GetObject("", &handle), kConfigError);
  EXPECT_EQ(loader->GetObject(nullptr, "", &handle), kConfigError);
  EXPECT_EQ(handle, untouched);
  EXPECT_EQ(TakeLog(), kGetObject + "key is empty\n" + kGetObject + "Failed to get key: \n");
  EXPECT_EQ(loader->GetObject("n", &handle), kConfigOk);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(loader->GetObject(loader->GetObject("o"), "x", &handle), kConfigOk);
  EXPECT_EQ(loader->GetObject(handle, "y", &handle), kConfigOk);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(loader->GetObject("%s", &handle), kConfigNotFound);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: %s\n");
  for (const void* object :
       {static_cast<const void*>(nullptr), loader->GetObject("n"), loader->GetObject("o")}) {
    handle = untouched;
    EXPECT_EQ(loader->GetObject(object, "%s", &handle), kConfigError);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(TakeLog(), kGetObject + "Failed to get key: %s\n");
  }
}

TEST(ConfigLoad, ReadsArraysOfObjectsIntoRows) {
  for (const auto& [value, expected] : ReadCases("rows.txt")) {
    std::string rows;
    for (const auto& row : Load("{\"k\": " + value + "}")->GetArrayObject("k")) {
      rows += Text(row) + "\n";
    }
    EXPECT_EQ(rows, expected) << value;
  }
  EXPECT_EQ(Text(Config("n", "text")), R"(n:3="text")");
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
  for (const std::string& text : {"{}"s, " [1]\n\n"s, "-1234567890123e-5"s, "null\0x"s, "\"\xff\""s,
                                  deep, deepObject, '"' + zeros + '"'}) {
    EXPECT_EQ(loader->Initialize(Json(text)), kConfigOk) << text.substr(0, 20);
  }
  for (const std::string& text : {""s, " \n"s, "\xef\xbb\xbf{}"s, "{} {}"s, "[1,]"s, "{} //"s,
                                  "NaN"s, "\0{}"s, "0e309"s, "1" + zeros, "0." + Repeat(zeros, 200),
                                  Repeat("[", 300) + "1," + Repeat("]", 300), deepObject + "//"}) {
    EXPECT_EQ(loader->Initialize(Json(text)), kConfigError) << text.substr(0, 20);
  }
  EXPECT_EQ(TakeLog(), "");
}

TEST(ConfigLoad, KeepsItsValuesWhenInitializeFails) {
  const auto loader = Load(R"({"k": 1})");
  for (const auto& [data, status] : std::vector<std::pair<ConfigLoadCreateData, int32_t>>{
           {{kConfigFileTypeJson, "/nonexistent"}, kConfigNotFound},
           {{kConfigFileTypeJson, "/"}, kConfigError},
           {Json("{}", std::numeric_limits<off_t>::max()), kConfigError},
           {Json("{"), kConfigError}}) {
    const int lowestFree = dup(STDIN_FILENO);
    close(lowestFree);
    SCOPED_TRACE(data.filePath);
    EXPECT_EQ(loader->Initialize(data), status);
    EXPECT_EQ(fcntl(lowestFree, F_GETFD), -1) << "the file is closed";
    EXPECT_EQ(loader->GetInt("k"), 1);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(CreateObject(data), nullptr);
    EXPECT_EQ(TakeLog(), kNotCreated);
  }
}

TEST(ConfigLoad, RefusesOtherFileTypes) {
  const ConfigLoadCreateData data = {-1, Json("{}").filePath};
  EXPECT_EQ(CreateObject(data), nullptr);
  EXPECT_EQ(TakeLog(), "configloadfactory.h CreateObject() Error fileType\n");
  EXPECT_EQ(ConfigLoadJson().Initialize(data), kConfigError);
  EXPECT_EQ(TakeLog(), "configloadjson.cpp Initialize() Error file type: -1\n");
}

TEST(Log, WritesBaseNameLineFunctionAndMessageInAtMost1023Bytes) {
  setenv(kThreshold, "7", 1);  // too late: this file's threshold is 4
  SARVIK_LOG_ERROR("100%s", "%d");
  EXPECT_EQ(TakeLog(), "config_test.cpp:" + std::to_string(__LINE__ - 1) + " TestBody() 100%d\n");
  SarvikSystemLog(3, "f", 1, "F", "below the threshold");
  SarvikSystemLog(4, "f", 1, "F", "m");
  EXPECT_EQ(TakeLog(), "f:1 F() m\n");
  for (const char* file : {"/a/b/", "", "name", "/name"})
    SarvikSystemLog(6, file, -1, "F", "%s", "");
  EXPECT_EQ(TakeLog(), ":-1 F() \n:-1 F() \nname:-1 F() \nname:-1 F() \n");
  for (const std::size_t length : {1015U, 1016U, 1022U, 1023U, 5000U}) {
    const std::string text(length, 'x');
    SarvikSystemLog(6, "f", 1, "F", "%s", text.c_str());
    EXPECT_EQ(TakeLog(), ("f:1 F() " + text).substr(0, 1023) + "\n") << length;
    SarvikSystemLog(6, text.c_str(), 1, "F", "message");
    EXPECT_EQ(TakeLog(), (text + ":1 F() message").substr(0, 1023) + "\n") << length;
  }
}

TEST(Property, IsAnIntegerOf32BitsOrTheDefault) {
  const auto property = [](const std::string& text) {
    setenv(kThreshold, text.c_str(), 1);
    errno = ERANGE;  // from an earlier call, so it must not count
    return property_get_int32(kThreshold, 5);
  };
  for (const char* text : {"", "7 ", "2147483648", "-2147483649"})
    EXPECT_EQ(property(text), 5) << text;
  for (const char* text : {" 6", "0x6", "06", "6"}) EXPECT_EQ(property(text), 6) << text;
  EXPECT_EQ(property("-2147483648"), INT32_MIN);
  EXPECT_EQ(property("2147483647"), INT32_MAX);
  unsetenv(kThreshold);
  EXPECT_EQ(property_get_int32(kThreshold, 5), 5);
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
  const std::regex lineNumber("^(config[a-z]*[.](cpp|h)):[0-9]+");  // not of config_test.cpp
  logged += std::regex_replace(va_arg(arguments, const char*), lineNumber, "$1") + "\n";
  va_end(arguments);
  return 1;
}

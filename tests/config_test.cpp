// The configuration loader and the log that it writes to.

#include <android/log.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "cases.h"
#include "config/configloadjson.h"
#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"
#include "log/sarviksystemlog.h"

namespace {

using std::string_literals::operator""s;

std::string logged;  // without line numbers

std::string TakeLog() { return std::exchange(logged, ""); }

}  // namespace

// In place of the platform's function: of a static library the linker takes only what the program
// does not define itself.
int __android_log_print(int priority, const char* tag, const char* format, ...) {
  EXPECT_EQ(priority, ANDROID_LOG_ERROR);
  EXPECT_STREQ(tag, "[SARVIKSYS]");
  EXPECT_STREQ(format, "%s");
  va_list arguments;
  va_start(arguments, format);
  const char* line = va_arg(arguments, const char*);
  logged += std::regex_replace(line, std::regex("^(config[a-z.]*):[0-9]+ "), "$1 ") + "\n";
  va_end(arguments);
  return 1;
}

namespace {

constexpr char kThreshold[] = "persist.vendor.camera.sarviksystem.loglevel";
const std::string kNotCreated = "configloadjson.cpp Create() Failed to initialize ConfigLoadJson\n";
const std::string kGetObject = "configloadjson.cpp GetObject() ";

// A configuration with the given text, in memory for as long as the test program runs.
ConfigLoadCreateData Json(const std::string& text) {
  const int fd = memfd_create("configuration", 0);
  EXPECT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  return {kConfigFileTypeJson, "/proc/self/fd/" + std::to_string(fd)};
}

std::unique_ptr<ConfigLoad> Load(const std::string& text) {
  return std::unique_ptr<ConfigLoad>(CreateObject(Json(text)));
}

using testing::PrintToString;

std::string PrintToString(const Config& config) {
  const Data& data = config.data;
  EXPECT_TRUE(data.stringValue.empty() || data.type == DataType::kString);
  if (data.type == DataType::kBool) return config.name + (data.boolValue ? "=true" : "=false");
  if (data.type == DataType::kInt) return config.name + "=" + PrintToString(data.intValue);
  if (data.type == DataType::kFloat)
    return config.name + "=" + PrintToString(data.floatValue) + "f";
  return config.name + "='" + data.stringValue + "'";
}

// What the six typed getters find at the top level or, with a handle, in an object, where each
// failure is logged. The getters without a status agree with those of the top level.
template <typename... Handle>
std::string CallGetters(const ConfigLoad& loader, const std::string& key, Handle... object) {
  std::string found;
  std::string log;
  const auto add = [&](const std::string& getter, int32_t status, const auto& value, auto fallback,
                       const auto& withoutStatus) {
    EXPECT_TRUE(status == 0 || (status == 4 && value == fallback)) << getter << " " << status;
    const bool isTopLevel = sizeof...(object) == 0;
    EXPECT_TRUE(!isTopLevel || withoutStatus == (status == 0 ? value : decltype(fallback)()))
        << getter;
    if (status == 0) found += getter + " " + PrintToString(value) + "\n";
    const bool isLogged = status != 0 && !isTopLevel && !key.empty();
    if (isLogged) log += "configloadjson.cpp " + getter + "() Failed to get key: " + key + "\n";
  };
  int32_t i = 1;
  float f = 1.0F;
  std::string s = "before";
  std::vector<int32_t> is = {1};
  std::vector<float> fs = {1.0F};
  std::vector<std::string> ss = {"before"};
  add("GetInt", loader.GetInt(object..., key, i, -7), i, -7, loader.GetInt(key));
  add("GetFloat", loader.GetFloat(object..., key, f, -7.5F), f, -7.5F, loader.GetFloat(key));
  add("GetString", loader.GetString(object..., key, s, "default"), s, "default"s,
      loader.GetString(key));
  add("GetIntArray", loader.GetIntArray(object..., key, is), is, decltype(is)(),
      loader.GetIntArray(key));
  add("GetFloatArray", loader.GetFloatArray(object..., key, fs), fs, decltype(fs)(),
      loader.GetFloatArray(key));
  add("GetStringArray", loader.GetStringArray(object..., key, ss), ss, decltype(ss)(),
      loader.GetStringArray(key));
  EXPECT_EQ(TakeLog(), log);
  return found;
}

TEST(ConfigLoad, ReadsEachKindOfValueOnlyWithTheGetterForIt) {
  for (const auto& [value, found] : ReadCases("values.txt")) {
    SCOPED_TRACE(value);
    const std::string members = "\"k\": " + value + R"(, "k": 9, "": 9})";
    const auto loader = Load(R"({"object": {)" + members + "," + members);
    ASSERT_NE(loader, nullptr);
    EXPECT_EQ(CallGetters(*loader, "k"), found);
    EXPECT_EQ(CallGetters(*loader, "k", loader->GetObject("object")), found);
  }
}

TEST(ConfigLoad, FailsForKeysAndHandlesThatLeadNowhere) {
  const auto loader = Load(R"({"": 1, "name": 5, "object": {"": 1}})");
  for (const char* key : {"", "Name", "nam", "names"}) {
    EXPECT_EQ(CallGetters(*loader, key), "");
    EXPECT_EQ(CallGetters(*Load("[1]"), key), "");
    for (const void* object : {loader->GetObject("object"), loader->GetObject("name"),
                               static_cast<const void*>(nullptr)}) {
      EXPECT_EQ(CallGetters(*loader, key, object), "");
    }
  }
  EXPECT_EQ(loader->GetInt("name\0x"s), 5) << "a key ends at its first zero byte";
  EXPECT_EQ(loader->GetInt("\0x"s), 1) << "such a key is not empty";
}

TEST(ConfigLoad, HandsOutHandlesToValuesOfAnyKind) {
  const auto loader = Load(R"({"n": 5, "o": {"x": {"y": 1}}})");
  const void* const untouched = loader.get();
  const void* handle = untouched;
  EXPECT_EQ(loader->GetObject("", &handle), 4);
  EXPECT_EQ(loader->GetObject(nullptr, "", &handle), 4);
  EXPECT_EQ(handle, untouched);
  EXPECT_EQ(TakeLog(), kGetObject + "key is empty\n" + kGetObject + "Failed to get key: \n");
  EXPECT_EQ(loader->GetObject("m", &handle), 12);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(loader->GetObject("m"), nullptr);
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: m\n" + kGetObject + "key is not found: m\n");
  for (const void* object :
       {static_cast<const void*>(nullptr), loader->GetObject("n"), loader->GetObject("o")}) {
    handle = untouched;
    EXPECT_EQ(loader->GetObject(object, "m", &handle), 4);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(TakeLog(), kGetObject + "Failed to get key: m\n");
  }
  EXPECT_EQ(loader->GetObject("n", &handle), 0);
  EXPECT_EQ(static_cast<const rapidjson::Value*>(handle)->GetInt(), 5);
  EXPECT_EQ(loader->GetObject(loader->GetObject("o"), "x", &handle), 0);
  EXPECT_EQ(CallGetters(*loader, "m", handle), "");
  EXPECT_EQ(CallGetters(*loader, "y", handle), "GetInt 1\n");
}

TEST(ConfigLoad, ReadsArraysOfObjectsIntoRows) {
  for (const auto& [value, expected] : ReadCases("rows.txt")) {
    std::string rows;
    for (const auto& row : Load("{\"k\": " + value + "}")->GetArrayObject("k")) {
      for (const Config& config : row) rows += PrintToString(config) + " ";
      rows.back() = '\n';
    }
    EXPECT_EQ(rows, expected) << value;
  }
  EXPECT_TRUE(Load("{}")->GetArrayObject("k").empty());
  EXPECT_TRUE(Load("{}")->GetArrayObject("").empty());
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: k\n" + kGetObject + "key is empty\n");
  EXPECT_EQ(PrintToString(Config("n", "text")) + PrintToString(Config("n", 0)), "n='text'n=0");
}

TEST(ConfigLoad, LoadsStrictJsonUpToItsFirstZeroByte) {
  const std::string open(1000000, '[');
  const std::string close(1000000, ']');
  for (const std::string& text :
       {"{}"s, " [1]\n\n"s, "7"s, "null\0x"s, "\"\xff\""s, open + close}) {
    EXPECT_NE(Load(text), nullptr) << text.substr(0, 20);
    EXPECT_EQ(TakeLog(), "");
  }
  for (const std::string& text :
       {""s, " \n"s, "\xef\xbb\xbf{}"s, "{} {}"s, "[1,]"s, "{} //"s, "NaN"s, "\0{}"s, open}) {
    EXPECT_EQ(Load(text), nullptr) << text.substr(0, 20);
    EXPECT_EQ(TakeLog(), kNotCreated);
  }
  EXPECT_EQ(Load("[1]")->GetObject("k"), nullptr);
  EXPECT_TRUE(Load("[{}]")->GetArrayObject("k").empty());
  EXPECT_EQ(TakeLog(), kGetObject + "key is not found: k\n" + kGetObject + "key is not found: k\n");

  const ConfigLoadCreateData huge = Json("{}");
  EXPECT_EQ(truncate(huge.filePath.c_str(), INT64_MAX), 0);
  EXPECT_EQ(CreateObject(huge), nullptr);
  EXPECT_EQ(TakeLog(), kNotCreated);
  for (const char* unreadable : {"/nonexistent", "/", "", "/proc/self/mem"}) {
    EXPECT_EQ(CreateObject({kConfigFileTypeJson, unreadable}), nullptr);
    EXPECT_EQ(TakeLog(), kNotCreated);
  }
}

TEST(ConfigLoad, ReadsPipes) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(write(ends[1], "{}", 2), 2);
  close(ends[1]);
  const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
  EXPECT_NE(std::unique_ptr<ConfigLoad>(CreateObject({kConfigFileTypeJson, path})), nullptr);
  close(ends[0]);
}

TEST(ConfigLoad, GivesWithoutAStatusWhatAnOverridingClassGivesWithOne) {
  struct Seven : ConfigLoadJson {
    using ConfigLoadJson::GetInt;
    int32_t GetInt(const std::string& /*key*/, int32_t& value, int32_t /*default*/) const override {
      value = 7;
      return kConfigOk;
    }
  };
  const ConfigLoad& loader = Seven();
  EXPECT_EQ(loader.GetInt("k"), 7);
}

TEST(ConfigLoad, KeepsItsValuesWhenItIsInitialisedAgainInVain) {
  const auto loader = Load(R"({"k": 1})");
  EXPECT_EQ(loader->Initialize({kConfigFileTypeJson, "/nonexistent"}), 12);
  EXPECT_EQ(loader->Initialize({-1, Json("{}").filePath}), 4);
  EXPECT_EQ(TakeLog(), "configloadjson.cpp Initialize() Error file type: -1\n");
  EXPECT_EQ(loader->Initialize(Json("{")), 4);
  EXPECT_EQ(loader->GetInt("k"), 1);
  EXPECT_EQ(loader->Initialize(Json(R"({"k": 2})")), 0);
  EXPECT_EQ(loader->GetInt("k"), 2);
  EXPECT_EQ(TakeLog(), "");
  EXPECT_EQ(CreateObject({1, "/"}), nullptr);
  EXPECT_EQ(ConfigLoadJson::Create({1, "/"}), nullptr);
  EXPECT_EQ(TakeLog(),
            "configloadfactory.h CreateObject() Error fileType\n"
            "configloadjson.cpp Initialize() Error file type: 1\n" +
                kNotCreated);
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

TEST(Property, IsAnIntegerOf32BitsOrTheDefault) {
  const auto read = [](const char* text) {
    setenv(kThreshold, text, 1);
    return property_get_int32(kThreshold, 5);
  };
  EXPECT_EQ(property_get_int32(kThreshold, 5), 5);
  EXPECT_EQ(read("6"), 6);
  EXPECT_EQ(read("0x7"), 7);
  EXPECT_EQ(read("010"), 8);
  EXPECT_EQ(read("2147483647"), INT32_MAX);
  EXPECT_EQ(read("-2147483648"), INT32_MIN);
  for (const char* text :
       {"", "7x", "2147483648", "-2147483649", "4294967303", "99999999999999999999"}) {
    EXPECT_EQ(read(text), 5) << text;
  }
  unsetenv(kThreshold);
}

}  // namespace

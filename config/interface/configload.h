// Typed access to a configuration file: one file is read into memory and then answers look-ups by
// key.
//
// Rules that all operations share:
//  - A status is 0 for success or one of the statuses below.
//  - A key ends at its first zero byte and is compared byte for byte; of two members with one name
//    the first wins. An empty key always fails; one that begins with a zero byte is an empty name.
//  - An int has no fraction and no exponent, and fits 32 bits. A float lies within +-3.4028234e38.
//    It has a fraction or an exponent, or is an integer beyond 64 bits. Neither reads as the other.
//  - A string ends at its first zero byte.
//  - Object handles point to a value, of any kind, inside the loader. They are valid while the
//    loader lives and until its next successful Initialize. The loader owns what they point to.
//  - Typed getters at the top level never log. In an object every failure is logged, except an
//    empty key given to a typed getter.

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

constexpr int32_t kConfigOk = 0;
constexpr int32_t kConfigError = 4;      // bad file type, text, key or value
constexpr int32_t kConfigNotFound = 12;  // the file or, for the top-level GetObject, the key

constexpr int32_t kConfigFileTypeJson = 0;

struct ConfigLoadCreateData {
  int32_t fileType;      // kConfigFileTypeJson; every other value is refused
  std::string filePath;  // used as it is
};

enum class DataType : int32_t { kBool = 0, kInt = 1, kFloat = 2, kString = 3 };

// A value and its type.
struct Data {
  Data(bool value) : boolValue(value), type(DataType::kBool) {}
  Data(int32_t value) : intValue(value), type(DataType::kInt) {}
  Data(float value) : floatValue(value), type(DataType::kFloat) {}
  Data(std::string value) : stringValue(std::move(value)), intValue(0), type(DataType::kString) {}
  // Without these two, a string literal or an object handle would convert to bool.
  Data(const char* value) : Data(std::string(value)) {}
  Data(const void* value) = delete;

  std::string stringValue;  // empty unless `type` is kString
  union {
    bool boolValue;
    int32_t intValue;
    float floatValue;
  };
  DataType type;
};

// A named value.
struct Config {
  Config(std::string memberName, Data value)
      : name(std::move(memberName)), data(std::move(value)) {}

  std::string name;
  Data data;
};

class ConfigLoad {
 public:
  virtual ~ConfigLoad() = default;

  // Reads and parses a file. On failure the values read before stay readable. Returns
  // kConfigNotFound when the file cannot be opened; kConfigError when it is of an unknown type,
  // cannot be read, is malformed or does not fit into memory. docs/configuration.md lists the few
  // well-formed texts that are refused as well. Loading from a pipe waits until it is closed.
  // What was read before is freed only with the loader.
  virtual int32_t Initialize(ConfigLoadCreateData data) = 0;

  // Top-level scalars. `value` is always written: with what was found, or else with `defaultValue`,
  // and then the status is kConfigError.
  virtual int32_t GetInt(const std::string& key, int32_t& value, int32_t defaultValue) const = 0;
  virtual int32_t GetFloat(const std::string& key, float& value, float defaultValue) const = 0;
  virtual int32_t GetString(const std::string& key, std::string& value,
                            std::string defaultValue) const = 0;

  // Top-level arrays. On success `values` holds all elements, in order. When there is no such
  // array, or it is empty or has an element of another type, `values` is emptied and the status is
  // kConfigError.
  virtual int32_t GetIntArray(const std::string& key, std::vector<int32_t>& values) const = 0;
  virtual int32_t GetFloatArray(const std::string& key, std::vector<float>& values) const = 0;
  virtual int32_t GetStringArray(const std::string& key,
                                 std::vector<std::string>& values) const = 0;

  // A handle to a top-level value of any kind. Sets it to null and returns kConfigNotFound when
  // there is none; leaves it as it is and returns kConfigError for an empty key. Logs both.
  virtual int32_t GetObject(const std::string& key, const void** handle) const = 0;

  // The six typed getters in the object that `object` designates. A null handle, or one to another
  // kind of value, fails like a missing key.
  virtual int32_t GetInt(const void* object, std::string key, int32_t& value,
                         int32_t defaultValue) const = 0;
  virtual int32_t GetFloat(const void* object, std::string key, float& value,
                           float defaultValue) const = 0;
  virtual int32_t GetString(const void* object, std::string key, std::string& value,
                            std::string defaultValue) const = 0;
  virtual int32_t GetIntArray(const void* object, std::string key,
                              std::vector<int32_t>& values) const = 0;
  virtual int32_t GetFloatArray(const void* object, std::string key,
                                std::vector<float>& values) const = 0;
  virtual int32_t GetStringArray(const void* object, std::string key,
                                 std::vector<std::string>& values) const = 0;

  // As the top-level GetObject, except that a missing key gives kConfigError. So does an `object`
  // that is null or designates no object.
  virtual int32_t GetObject(const void* object, const std::string& key,
                            const void** handle) const = 0;

  // Top-level values for callers that are content with 0, an empty string, an empty vector or a
  // null handle in place of a status. They call the getters above, so a class that overrides those
  // changes these too.
  virtual int32_t GetInt(const std::string& key) const = 0;
  virtual float GetFloat(const std::string& key) const = 0;
  virtual std::string GetString(const std::string& key) const = 0;
  virtual std::vector<int32_t> GetIntArray(const std::string& key) const = 0;
  virtual std::vector<float> GetFloatArray(const std::string& key) const = 0;
  virtual std::vector<std::string> GetStringArray(const std::string& key) const = 0;
  virtual const void* GetObject(const std::string& key) const = 0;

  // A top-level array of objects, as a table with one row for each object. A row holds the object's
  // ints, floats and strings in document order. Of a member that is an array, it holds each bool,
  // int, float and string under the member's name. Other values and empty rows are left out.
  // Anything but an array gives no rows; a missing or empty key is logged as by GetObject.
  virtual std::vector<std::vector<Config>> GetArrayObject(const std::string& key) const = 0;
};

#include "config/configloadjson.h"

#include <android/log.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/interface/configload.h"
#include "config/jsondocument.h"
#include "log/sarviksystemlog.h"

namespace {

using Value = qordex::JsonDocument::ValueType;

const Value* FromHandle(const void* handle) { return static_cast<const Value*>(handle); }

// The first member named `key`; null if there is none, if `object` is null or no object, or if the
// key is empty.
const Value* FindMember(const Value* object, const std::string& key) {
  if (key.empty() || object == nullptr || !object->IsObject()) return nullptr;
  const auto member = object->FindMember(key.c_str());
  return member == object->MemberEnd() ? nullptr : &member->value;
}

// Reads a member that RapidJSON holds as a `T`.
template <typename T, typename Result>
int32_t ReadScalar(const Value* object, const std::string& key, Result& value,
                   Result defaultValue) {
  const Value* member = FindMember(object, key);
  if (member == nullptr || !member->Is<T>()) {
    value = std::move(defaultValue);
    return kConfigError;
  }
  value = member->Get<T>();
  return kConfigOk;
}

// Reads an array of which RapidJSON holds every element as a `T`.
template <typename T, typename Result>
int32_t ReadArray(const Value* object, const std::string& key, std::vector<Result>& values) {
  const Value* member = FindMember(object, key);
  values.clear();  // not earlier: the key may lie in `values`
  if (member == nullptr || !member->IsArray()) return kConfigError;
  std::vector<Result> elements;
  for (const Value& element : member->GetArray()) {
    if (!element.Is<T>()) return kConfigError;
    elements.emplace_back(element.Get<T>());
  }
  values = std::move(elements);
  return values.empty() ? kConfigError : kConfigOk;
}

// Logs a failure, except for an empty key, on behalf of its caller: the default arguments are the
// name and the line of the getter that calls it. Returns `status`.
int32_t LogIfFailed(int32_t status, const std::string& key,
                    const char* getter = __builtin_FUNCTION(), int line = __builtin_LINE()) {
  if (status != kConfigOk && !key.empty()) {
    SarvikSystemLog(ANDROID_LOG_ERROR, __FILE__, line, getter, "Failed to get key: %s",
                    key.c_str());
  }
  return status;
}

// Appends `value` under `name` when it is an int, a float or a string.
void AppendValue(const char* name, const Value& value, std::vector<Config>& row) {
  if (value.IsInt()) row.emplace_back(name, value.GetInt());
  if (value.IsFloat()) row.emplace_back(name, value.GetFloat());
  if (value.IsString()) row.emplace_back(name, value.GetString());
}

std::vector<Config> ReadRow(const Value& object) {
  std::vector<Config> row;
  for (const auto& [name, value] : object.GetObject()) {
    AppendValue(name.GetString(), value, row);
    if (!value.IsArray()) continue;
    for (const Value& element : value.GetArray()) {
      // Bools count as values only here, inside an array.
      if (element.IsBool()) row.emplace_back(name.GetString(), element.GetBool());
      AppendValue(name.GetString(), element, row);
    }
  }
  return row;
}

}  // namespace

ConfigLoadJson::ConfigLoadJson() : document(std::make_unique<qordex::JsonDocument>()) {}

ConfigLoadJson::~ConfigLoadJson() = default;

ConfigLoadJson* ConfigLoadJson::Create(ConfigLoadCreateData data) {
  auto loader = std::make_unique<ConfigLoadJson>();
  if (loader->Initialize(std::move(data)) != kConfigOk) {
    SARVIK_LOG_ERROR("Failed to initialize ConfigLoadJson");
    return nullptr;
  }
  return loader.release();
}

int32_t ConfigLoadJson::Initialize(ConfigLoadCreateData data) {
  if (data.fileType != kConfigFileTypeJson) {
    SARVIK_LOG_ERROR("Error file type: %d", data.fileType);
    return kConfigError;
  }
  try {
    const int32_t status = ReadFile(data.filePath);
    if (status != kConfigOk) return status;
    return document->Parse(content.c_str()) ? kConfigOk : kConfigError;
  } catch (const std::exception&) {
    // std::bad_alloc or std::length_error: the file does not fit into memory.
    return kConfigError;
  }
}

int32_t ConfigLoadJson::ReadFile(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"),
                                                             std::fclose);
  if (file == nullptr) return kConfigNotFound;

  struct stat attributes = {};
  fstat(fileno(file.get()), &attributes);
  constexpr std::size_t kSmallestStep = 4096;  // for a pipe, which has no size
  const auto fileSize = static_cast<std::size_t>(attributes.st_size);
  // One byte more than the file has, so that the first read reaches its end.
  const std::size_t step = std::max(fileSize + 1, kSmallestStep);
  std::string text;
  std::size_t size = 0;
  do {
    text.resize(size + step);
    size += std::fread(&text[size], 1, step, file.get());
  } while (size == text.size());
  text.resize(size);
  if (std::ferror(file.get()) != 0) return kConfigError;
  content = std::move(text);
  return kConfigOk;
}

// The getters at the top level.

int32_t ConfigLoadJson::GetInt(const std::string& key, int32_t& value, int32_t defaultValue) const {
  return ReadScalar<int32_t>(document.get(), key, value, defaultValue);
}

int32_t ConfigLoadJson::GetFloat(const std::string& key, float& value, float defaultValue) const {
  return ReadScalar<float>(document.get(), key, value, defaultValue);
}

int32_t ConfigLoadJson::GetString(const std::string& key, std::string& value,
                                  std::string defaultValue) const {
  return ReadScalar<const char*>(document.get(), key, value, std::move(defaultValue));
}

int32_t ConfigLoadJson::GetIntArray(const std::string& key, std::vector<int32_t>& values) const {
  return ReadArray<int32_t>(document.get(), key, values);
}

int32_t ConfigLoadJson::GetFloatArray(const std::string& key, std::vector<float>& values) const {
  return ReadArray<float>(document.get(), key, values);
}

int32_t ConfigLoadJson::GetStringArray(const std::string& key,
                                       std::vector<std::string>& values) const {
  return ReadArray<const char*>(document.get(), key, values);
}

int32_t ConfigLoadJson::GetObject(const std::string& key, const void** handle) const {
  if (key.empty()) {
    SARVIK_LOG_ERROR("key is empty");
    return kConfigError;
  }
  *handle = FindMember(document.get(), key);
  if (*handle == nullptr) {
    SARVIK_LOG_ERROR("key is not found: %s", key.c_str());
    return kConfigNotFound;
  }
  return kConfigOk;
}

// The getters in an object, which log when they fail.

int32_t ConfigLoadJson::GetInt(const void* object, std::string key, int32_t& value,
                               int32_t defaultValue) const {
  return LogIfFailed(ReadScalar<int32_t>(FromHandle(object), key, value, defaultValue), key);
}

int32_t ConfigLoadJson::GetFloat(const void* object, std::string key, float& value,
                                 float defaultValue) const {
  return LogIfFailed(ReadScalar<float>(FromHandle(object), key, value, defaultValue), key);
}

int32_t ConfigLoadJson::GetString(const void* object, std::string key, std::string& value,
                                  std::string defaultValue) const {
  return LogIfFailed(
      ReadScalar<const char*>(FromHandle(object), key, value, std::move(defaultValue)), key);
}

int32_t ConfigLoadJson::GetIntArray(const void* object, std::string key,
                                    std::vector<int32_t>& values) const {
  return LogIfFailed(ReadArray<int32_t>(FromHandle(object), key, values), key);
}

int32_t ConfigLoadJson::GetFloatArray(const void* object, std::string key,
                                      std::vector<float>& values) const {
  return LogIfFailed(ReadArray<float>(FromHandle(object), key, values), key);
}

int32_t ConfigLoadJson::GetStringArray(const void* object, std::string key,
                                       std::vector<std::string>& values) const {
  return LogIfFailed(ReadArray<const char*>(FromHandle(object), key, values), key);
}

int32_t ConfigLoadJson::GetObject(const void* object, const std::string& key,
                                  const void** handle) const {
  const Value* member = FindMember(FromHandle(object), key);
  if (!key.empty()) *handle = member;
  if (member == nullptr) {
    SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
    return kConfigError;
  }
  return kConfigOk;
}

// The getters without a status.

int32_t ConfigLoadJson::GetInt(const std::string& key) const {
  int32_t value = 0;
  GetInt(key, value, 0);
  return value;
}

float ConfigLoadJson::GetFloat(const std::string& key) const {
  float value = 0.0F;
  GetFloat(key, value, 0.0F);
  return value;
}

std::string ConfigLoadJson::GetString(const std::string& key) const {
  std::string value;
  GetString(key, value, "");
  return value;
}

std::vector<int32_t> ConfigLoadJson::GetIntArray(const std::string& key) const {
  std::vector<int32_t> values;
  GetIntArray(key, values);
  return values;
}

std::vector<float> ConfigLoadJson::GetFloatArray(const std::string& key) const {
  std::vector<float> values;
  GetFloatArray(key, values);
  return values;
}

std::vector<std::string> ConfigLoadJson::GetStringArray(const std::string& key) const {
  std::vector<std::string> values;
  GetStringArray(key, values);
  return values;
}

const void* ConfigLoadJson::GetObject(const std::string& key) const {
  const void* handle = nullptr;
  GetObject(key, &handle);
  return handle;
}

std::vector<std::vector<Config>> ConfigLoadJson::GetArrayObject(const std::string& key) const {
  const Value* array = FromHandle(GetObject(key));
  if (array == nullptr || !array->IsArray()) return {};

  std::vector<std::vector<Config>> rows;
  for (const Value& element : array->GetArray()) {
    if (!element.IsObject()) continue;
    std::vector<Config> row = ReadRow(element);
    if (!row.empty()) rows.push_back(std::move(row));
  }
  return rows;
}

#include "config/configloadjson.h"

#include <rapidjson/document.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "config/interface/configload.h"
#include "config/jsonexponents.h"
#include "log/sarviksystemlog.h"

namespace {

using Value = rapidjson::Value;

// Reading of one kind of value: whether a value is of that kind, and what it holds.
template <typename T>
struct Kind;

template <>
struct Kind<int32_t> {
  static bool Is(const Value& value) { return value.IsInt(); }
  static int32_t Get(const Value& value) { return value.GetInt(); }
};

template <>
struct Kind<float> {
  static bool Is(const Value& value) { return value.IsFloat(); }
  static float Get(const Value& value) { return value.GetFloat(); }
};

template <>
struct Kind<std::string> {
  static bool Is(const Value& value) { return value.IsString(); }
  static std::string Get(const Value& value) { return value.GetString(); }
};

const Value* FromHandle(const void* handle) { return static_cast<const Value*>(handle); }

// The first member of that name; null when there is none, when `object` is null or no object, and
// for an empty key.
const Value* FindMember(const Value* object, const std::string& key) {
  if (key.empty() || object == nullptr || !object->IsObject()) return nullptr;
  const auto member = object->FindMember(key.c_str());
  return member == object->MemberEnd() ? nullptr : &member->value;
}

template <typename T>
int32_t ReadScalar(const Value* object, const std::string& key, T& value, T defaultValue) {
  const Value* member = FindMember(object, key);
  const bool isFound = member != nullptr && Kind<T>::Is(*member);
  value = isFound ? Kind<T>::Get(*member) : std::move(defaultValue);
  return isFound ? kConfigOk : kConfigError;
}

// The elements of the array `member`; empty unless all of them are of the kind asked for.
template <typename T>
std::vector<T> ReadElements(const Value* member) {
  if (member == nullptr || !member->IsArray()) return {};
  std::vector<T> elements;
  elements.reserve(member->Size());
  for (const Value& element : member->GetArray()) {
    if (!Kind<T>::Is(element)) return {};
    elements.push_back(Kind<T>::Get(element));
  }
  return elements;
}

template <typename T>
int32_t ReadArray(const Value* object, const std::string& key, std::vector<T>& values) {
  values = ReadElements<T>(FindMember(object, key));
  return values.empty() ? kConfigError : kConfigOk;
}

// Appends `value` under `name` when it is an int, a float or a string. Returns whether it is.
bool AppendValue(const char* name, const Value& value, std::vector<Config>& row) {
  if (Kind<int32_t>::Is(value)) {
    row.emplace_back(name, Kind<int32_t>::Get(value));
  } else if (Kind<float>::Is(value)) {
    row.emplace_back(name, Kind<float>::Get(value));
  } else if (Kind<std::string>::Is(value)) {
    row.emplace_back(name, Kind<std::string>::Get(value));
  } else {
    return false;
  }
  return true;
}

// Bools count as values only here, inside an array.
void AppendElements(const char* name, const Value& array, std::vector<Config>& row) {
  for (const Value& element : array.GetArray()) {
    if (element.IsBool()) {
      row.emplace_back(name, element.GetBool());
    } else {
      AppendValue(name, element, row);
    }
  }
}

std::vector<Config> ReadRow(const Value& object) {
  std::vector<Config> row;
  for (const auto& member : object.GetObject()) {
    const char* name = member.name.GetString();
    if (!AppendValue(name, member.value, row) && member.value.IsArray()) {
      AppendElements(name, member.value, row);
    }
  }
  return row;
}

}  // namespace

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
    return status == kConfigOk ? Parse() : status;
  } catch (const std::bad_alloc&) {
    return kConfigError;
  } catch (const std::length_error&) {
    return kConfigError;
  }
}

int32_t ConfigLoadJson::Parse() {
  // This flag accepts the same texts as no flag at all, with the same values. Without it the parser
  // recurses once a nesting level, and a deep enough text overflows the stack.
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag;
  if (HasLongNegativeExponent(content)) {
    document.Parse<kFlags>(WithoutLongNegativeExponents(content).c_str());
  } else {
    document.Parse<kFlags>(content.c_str());
  }
  return document.HasParseError() ? kConfigError : kConfigOk;
}

int32_t ConfigLoadJson::ReadFile(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"),
                                                             std::fclose);
  if (file == nullptr) return kConfigNotFound;

  struct stat attributes = {};
  fstat(fileno(file.get()), &attributes);
  std::string text;
  std::size_t used = 0;
  // One byte more than the file has, so that the read that finds its end needs no larger buffer.
  // The size is a guess: a file may grow or shrink meanwhile, and a pipe has none.
  text.resize(static_cast<std::size_t>(attributes.st_size) + 1);
  while (const std::size_t count =
             std::fread(text.data() + used, 1, text.size() - used, file.get())) {
    used += count;
    if (used == text.size()) text.resize(2 * text.size());
  }
  if (std::ferror(file.get()) != 0) return kConfigError;
  text.resize(used);
  content = std::move(text);
  return kConfigOk;
}

int32_t ConfigLoadJson::GetInt(const std::string& key, int32_t& value, int32_t defaultValue) const {
  return ReadScalar(&document, key, value, defaultValue);
}

int32_t ConfigLoadJson::GetFloat(const std::string& key, float& value, float defaultValue) const {
  return ReadScalar(&document, key, value, defaultValue);
}

int32_t ConfigLoadJson::GetString(const std::string& key, std::string& value,
                                  std::string defaultValue) const {
  return ReadScalar(&document, key, value, std::move(defaultValue));
}

int32_t ConfigLoadJson::GetIntArray(const std::string& key, std::vector<int32_t>& values) const {
  return ReadArray(&document, key, values);
}

int32_t ConfigLoadJson::GetFloatArray(const std::string& key, std::vector<float>& values) const {
  return ReadArray(&document, key, values);
}

int32_t ConfigLoadJson::GetStringArray(const std::string& key,
                                       std::vector<std::string>& values) const {
  return ReadArray(&document, key, values);
}

int32_t ConfigLoadJson::GetObject(const std::string& key, const void** handle) const {
  if (key.empty()) {
    SARVIK_LOG_ERROR("key is empty");
    return kConfigError;
  }
  *handle = FindMember(&document, key);
  if (*handle == nullptr) {
    SARVIK_LOG_ERROR("key is not found: %s", key.c_str());
    return kConfigNotFound;
  }
  return kConfigOk;
}

// Each getter in an object logs for itself, because a line names the function that it stands in.

int32_t ConfigLoadJson::GetInt(const void* object, std::string key, int32_t& value,
                               int32_t defaultValue) const {
  const int32_t status = ReadScalar(FromHandle(object), key, value, defaultValue);
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
}

int32_t ConfigLoadJson::GetFloat(const void* object, std::string key, float& value,
                                 float defaultValue) const {
  const int32_t status = ReadScalar(FromHandle(object), key, value, defaultValue);
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
}

int32_t ConfigLoadJson::GetString(const void* object, std::string key, std::string& value,
                                  std::string defaultValue) const {
  const int32_t status = ReadScalar(FromHandle(object), key, value, std::move(defaultValue));
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
}

int32_t ConfigLoadJson::GetIntArray(const void* object, std::string key,
                                    std::vector<int32_t>& values) const {
  const int32_t status = ReadArray(FromHandle(object), key, values);
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
}

int32_t ConfigLoadJson::GetFloatArray(const void* object, std::string key,
                                      std::vector<float>& values) const {
  const int32_t status = ReadArray(FromHandle(object), key, values);
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
}

int32_t ConfigLoadJson::GetStringArray(const void* object, std::string key,
                                       std::vector<std::string>& values) const {
  const int32_t status = ReadArray(FromHandle(object), key, values);
  if (status != kConfigOk && !key.empty()) SARVIK_LOG_ERROR("Failed to get key: %s", key.c_str());
  return status;
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

// The loader of JSON files.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config/interface/configload.h"

namespace qordex {
class JsonDocument;
}

class ConfigLoadJson : public ConfigLoad {
 public:
  ConfigLoadJson();
  ~ConfigLoadJson() override;

  // Returns an initialised loader, or logs the failure and returns null. The caller owns it.
  static ConfigLoadJson* Create(ConfigLoadCreateData data);

  int32_t Initialize(ConfigLoadCreateData data) override;

  int32_t GetInt(const std::string& key, int32_t& value, int32_t defaultValue) const override;
  int32_t GetFloat(const std::string& key, float& value, float defaultValue) const override;
  int32_t GetString(const std::string& key, std::string& value,
                    std::string defaultValue) const override;
  int32_t GetIntArray(const std::string& key, std::vector<int32_t>& values) const override;
  int32_t GetFloatArray(const std::string& key, std::vector<float>& values) const override;
  int32_t GetStringArray(const std::string& key, std::vector<std::string>& values) const override;
  int32_t GetObject(const std::string& key, const void** handle) const override;

  int32_t GetInt(const void* object, std::string key, int32_t& value,
                 int32_t defaultValue) const override;
  int32_t GetFloat(const void* object, std::string key, float& value,
                   float defaultValue) const override;
  int32_t GetString(const void* object, std::string key, std::string& value,
                    std::string defaultValue) const override;
  int32_t GetIntArray(const void* object, std::string key,
                      std::vector<int32_t>& values) const override;
  int32_t GetFloatArray(const void* object, std::string key,
                        std::vector<float>& values) const override;
  int32_t GetStringArray(const void* object, std::string key,
                         std::vector<std::string>& values) const override;
  int32_t GetObject(const void* object, const std::string& key, const void** handle) const override;

  int32_t GetInt(const std::string& key) const override;
  float GetFloat(const std::string& key) const override;
  std::string GetString(const std::string& key) const override;
  std::vector<int32_t> GetIntArray(const std::string& key) const override;
  std::vector<float> GetFloatArray(const std::string& key) const override;
  std::vector<std::string> GetStringArray(const std::string& key) const override;
  const void* GetObject(const std::string& key) const override;
  std::vector<std::vector<Config>> GetArrayObject(const std::string& key) const override;

 private:
  // Reads the whole file into `content`. Returns kConfigNotFound when it cannot be opened and
  // kConfigError when it cannot be read; throws when it does not fit into memory. On failure
  // `content` stays as it was.
  int32_t ReadFile(const std::string& path);

  std::string content;  // the file, byte for byte
  std::unique_ptr<qordex::JsonDocument> document;
};

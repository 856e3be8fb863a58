// A configuration of any text through parsing and every getter.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t size) {
  static const int file = memfd_create("configuration", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, input, size, 0) < 0) std::abort();
  const std::unique_ptr<ConfigLoad> loader(CreateObject({kConfigFileTypeJson, path}));
  if (loader == nullptr) return 0;
  // Keys of the seeds, and what the input holds after the zero byte that ends its text.
  const std::string all(input, input + size);
  const std::string chosen = all.substr(std::min(all.find('\0'), size - 1) + 1);
  for (const std::string& key : {std::string("k"), std::string(), chosen}) {
    loader->GetInt(key);
    loader->GetFloat(key);
    loader->GetString(key);
    loader->GetIntArray(key);
    loader->GetFloatArray(key);
    loader->GetStringArray(key);
    loader->GetArrayObject(key);
    // The getters in an object read alike, and log.
    const void* object = loader->GetObject(key);
    std::vector<std::string> texts;
    loader->GetStringArray(object, key, texts);
    loader->GetObject(object, key, &object);
  }
  return 0;
}

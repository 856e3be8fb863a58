// A configuration of any text through parsing and every getter.

#include <sys/mman.h>
#include <unistd.h>

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
  // The getters without a status call those with one. The getters in an object call the same code,
  // and log.
  loader->GetInt("k");
  loader->GetFloat("k");
  loader->GetIntArray("k");
  loader->GetFloatArray("k");
  loader->GetArrayObject("k");
  const void* object = loader->GetObject("k");
  std::string text;
  std::vector<std::string> texts;
  loader->GetString(object, "k", text, "");
  loader->GetStringArray(object, "k", texts);
  loader->GetObject(object, "k", &object);
  return 0;
}

// Loads a JSON file COUNT times: with CreateObject, or by hand into RapidJSON's own document, with
// its iterative or its recursive parser.
//
// usage: jsonload CreateObject|iterative|recursive FILE COUNT

#include <rapidjson/document.h>
#include <rapidjson/reader.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <memory>
#include <string>

#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"

namespace {

using Load = bool(const std::string& path);

bool LoadWithCreateObject(const std::string& path) {
  const std::unique_ptr<const ConfigLoad> loader(CreateObject({kConfigFileTypeJson, path}));
  return loader != nullptr;
}

template <unsigned kParseFlags>
bool LoadByHand(const std::string& path) {
  const std::size_t size = std::filesystem::file_size(path);
  const std::unique_ptr<char[]> buffer(new char[size + 1]);
  char* const text = buffer.get();
  text[size] = '\0';
  std::ifstream file(path, std::ios::binary);
  rapidjson::Document document;
  return file.read(text, static_cast<std::streamsize>(size)) &&
         !document.Parse<kParseFlags>(text).HasParseError();
}

// The way to load of that name, or null.
Load* FindLoad(const std::string& name) {
  if (name == "CreateObject") return LoadWithCreateObject;
  if (name == "iterative") return LoadByHand<rapidjson::kParseIterativeFlag>;
  if (name == "recursive") return LoadByHand<rapidjson::kParseDefaultFlags>;
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const auto load = argc == 4 ? FindLoad(argv[1]) : nullptr;
  if (load == nullptr) {
    std::fputs("usage: jsonload CreateObject|iterative|recursive FILE COUNT\n", stderr);
    return EXIT_FAILURE;
  }
  for (auto left = std::strtol(argv[3], nullptr, 10); left > 0; --left) {
    if (!load(argv[2])) return EXIT_FAILURE;
  }
}

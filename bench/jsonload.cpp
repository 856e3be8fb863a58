// Loads a JSON file COUNT times: with CreateObject, or by hand into RapidJSON's own document, with
// its iterative or its recursive parser.
//
// usage: jsonload CreateObject|iterative|recursive FILE COUNT

#include <rapidjson/document.h>
#include <rapidjson/reader.h>

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
  std::string text(std::filesystem::file_size(path), '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  rapidjson::Document document;
  return file && !document.Parse<kParseFlags>(text.c_str()).HasParseError();
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
  Load* const load = argc == 4 ? FindLoad(argv[1]) : nullptr;
  if (load == nullptr) {
    std::fputs("usage: jsonload CreateObject|iterative|recursive FILE COUNT\n", stderr);
    return EXIT_FAILURE;
  }
  for (int left = std::atoi(argv[3]); left > 0; --left) {
    if (!load(argv[2])) return EXIT_FAILURE;
  }
}

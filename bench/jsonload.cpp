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
#include <map>
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

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, Load*> loads = {
      {"CreateObject", LoadWithCreateObject},
      {"iterative", LoadByHand<rapidjson::kParseIterativeFlag>},
      {"recursive", LoadByHand<rapidjson::kParseDefaultFlags>},
  };
  if (argc != 4 || loads.count(argv[1]) == 0) {
    std::fputs("usage: jsonload CreateObject|iterative|recursive FILE COUNT\n", stderr);
    return EXIT_FAILURE;
  }
  for (auto left = std::strtol(argv[3], nullptr, 10); left > 0; --left) {
    if (!loads.at(argv[1])(argv[2])) return EXIT_FAILURE;
  }
}

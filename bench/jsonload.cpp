// Loads a JSON file COUNT times: with CreateObject, or by hand, which reads it whole and parses it
// into RapidJSON's own document.
//
// usage: jsonload CreateObject|by-hand FILE COUNT

#include <rapidjson/document.h>

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

bool LoadWithCreateObject(const std::string& path) {
  const std::unique_ptr<const ConfigLoad> loader(CreateObject({kConfigFileTypeJson, path}));
  return loader != nullptr;
}

bool LoadByHand(const std::string& path) {
  const std::size_t size = std::filesystem::file_size(path);
  const std::unique_ptr<char[]> text(new char[size + 1]);
  text[size] = '\0';
  std::ifstream file(path, std::ios::binary);
  rapidjson::Document document;
  return file.read(text.get(), static_cast<std::streamsize>(size)) &&
         !document.Parse(text.get()).HasParseError();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string way = argc == 4 ? argv[1] : "";
  const auto count = argc == 4 ? std::strtol(argv[3], nullptr, 10) : 0;
  if ((way != "CreateObject" && way != "by-hand") || count < 1) {
    std::fputs("usage: jsonload CreateObject|by-hand FILE COUNT\n", stderr);
    return EXIT_FAILURE;
  }
  const auto load = way == "CreateObject" ? LoadWithCreateObject : LoadByHand;
  for (auto left = count; left > 0; --left) {
    if (!load(argv[2])) return EXIT_FAILURE;
  }
}

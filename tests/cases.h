// Reads cases from a file in tests/cases. A case is an input and the output expected for it. An
// input begins in the first column, and its further lines are indented. Each "|" begins a line of
// output. Another "|" at the end of that line protects spaces before it.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

inline std::vector<std::pair<std::string, std::string>> ReadCases(const std::string& name) {
  std::vector<std::pair<std::string, std::string>> cases;
  std::ifstream file(CASES "/" + name);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t bar = line.find('|');
    if (bar != 0 && line[0] != ' ') cases.emplace_back();
    cases.back().first += line.substr(0, bar);
    if (bar == std::string::npos) continue;
    if (bar + 1 < line.size() && line.back() == '|') line.pop_back();
    cases.back().second += line.substr(bar + 1) + "\n";
  }
  EXPECT_FALSE(cases.empty()) << name;
  return cases;
}

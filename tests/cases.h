// Cases in a file of tests/cases: a line of input and below it the lines expected, each after "|".

#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

struct Case {
  std::string input, expected;
};

inline std::vector<Case> ReadCases(const std::string& name) {
  std::vector<Case> cases;
  std::ifstream file(CASES "/" + name);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] != '|') {
      cases.push_back({line, ""});
    } else {
      cases.back().expected += line.substr(1) + "\n";
    }
  }
  EXPECT_FALSE(cases.empty()) << name;
  return cases;
}

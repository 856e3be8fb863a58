#include "utils/textlayout.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

TEST(TextLayout, SplitsAtRunsOfDelimitersAndAppends) {
  struct Case {
    const char *text, *delimiters, *pieces;
  };
  for (const Case& c : {Case{",a,,b,", ",", "before|a|b"},
                        {",,,", ",", "before"},
                        {"", ",", "before"},
                        {"", "", "before"},
                        {"x, y", ", ", "before|x|y"},
                        {"x, y", ",", "before|x| y"},
                        {"a,b", "", "before|a,b"}}) {
    std::vector<std::string> pieces = {"before"};
    SplitString(c.text, &pieces, c.delimiters);
    std::string joined = pieces[0];
    for (std::size_t i = 1; i < pieces.size(); ++i) joined += "|" + pieces[i];
    EXPECT_EQ(joined, c.pieces);
  }
}

TEST(TextLayout, PadsToTheWidthInBytesAndNeverCuts) {
  EXPECT_EQ(Center("ab", 7, '-') + leftAlign("ab", 7, '.'), "--ab---ab.....");
  EXPECT_EQ(Center("ab", 3, '-') + leftAlign("ab", 3, '.'), "ab-ab.");
  EXPECT_EQ(Center("模", 5, '-') + leftAlign("模", 5, '.'), "-模-模..");
  EXPECT_EQ(Center("", 5, '-') + leftAlign("", 5, '.'), "-----.....");
  for (const int width : {2, 1, 0, -1, INT_MIN}) {
    EXPECT_EQ(Center("ab", width, '-') + leftAlign("ab", width, '.'), "abab");
  }
}

}  // namespace

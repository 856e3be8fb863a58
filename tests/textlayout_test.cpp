#include "utils/textlayout.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

TEST(TextLayout, SplitsAtRunsOfDelimitersAndAppends) {
  std::vector<std::string> pieces;
  for (const char* text : {",a,,b,", "", ",,,", "x, y"}) SplitString(text, &pieces, ",");
  for (const char* text : {"x ,y", " ,"}) SplitString(text, &pieces, ", ");
  for (const char* text : {"a,b", ""}) SplitString(text, &pieces, "");
  EXPECT_EQ(pieces, (std::vector<std::string>{"a", "b", "x", " y", "x", "y", "a,b"}));
}

TEST(TextLayout, PadsToTheWidthInBytesAndNeverCuts) {
  EXPECT_EQ(Center("ab", 7, '-') + leftAlign("ab", 7, '.'), "--ab---ab.....");
  EXPECT_EQ(Center("模", 4, '-') + leftAlign("模", 4, '.'), "模-模.");
  EXPECT_EQ(Center("", 5, '-') + leftAlign("", 5, '.'), "-----.....");
  for (const int width : {2, 1, 0, -1, INT_MIN})
    EXPECT_EQ(Center("ab", width, '-') + leftAlign("ab", width, '.'), "abab");
}

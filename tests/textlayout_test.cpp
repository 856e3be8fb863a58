#include "utils/textlayout.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

using Pieces = std::vector<std::string>;

// What SplitString makes of a list that already holds a piece.
Pieces Split(const char* text, const char* delimiters) {
  Pieces pieces = {"earlier"};
  SplitString(text, &pieces, delimiters);
  return pieces;
}

TEST(TextLayout, SplitsAtRunsOfDelimitersAndAppends) {
  EXPECT_EQ(Split(",a,,b,", ","), (Pieces{"earlier", "a", "b"}));
  EXPECT_EQ(Split(",,,", ","), Pieces{"earlier"});
  EXPECT_EQ(Split("x ,y", ", "), (Pieces{"earlier", "x", "y"}));
  EXPECT_EQ(Split("a,b", ""), (Pieces{"earlier", "a,b"}));
  EXPECT_EQ(Split("", ""), Pieces{"earlier"});
}

struct PadCase {
  const char* text;
  int width;
  const char* centred;
  const char* leftAligned;
};

TEST(TextLayout, PadsToTheWidthInBytesAndNeverCuts) {
  for (const PadCase& c : {PadCase{"ab", 7, "--ab---", "ab-----"},
                           {"模", 4, "模-", "模-"},
                           {"", 5, "-----", "-----"},
                           {"ab", 2, "ab", "ab"},
                           {"ab", 1, "ab", "ab"},
                           {"ab", -1, "ab", "ab"},
                           {"ab", INT_MIN, "ab", "ab"}}) {
    EXPECT_EQ(Center(c.text, c.width, '-'), c.centred) << c.text << " in " << c.width;
    EXPECT_EQ(leftAlign(c.text, c.width, '-'), c.leftAligned) << c.text << " in " << c.width;
  }
}

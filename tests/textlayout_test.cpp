#include "utils/textlayout.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

struct SplitCase {
  const char* text;
  const char* delimiters;
  std::vector<std::string> pieces;
};

TEST(TextLayout, SplitsAtRunsOfDelimitersAndAppends) {
  for (const SplitCase& c : {SplitCase{",a,,b,", ",", {"a", "b"}},
                             {"", ",", {}},
                             {",,,", ",", {}},
                             {"x, y", ",", {"x", " y"}},
                             {"x ,y", ", ", {"x", "y"}},
                             {" ,", ", ", {}},
                             {"a,b", "", {"a,b"}},
                             {"", "", {}}}) {
    std::vector<std::string> pieces = {"earlier"};
    std::vector<std::string> expected = pieces;
    expected.insert(expected.end(), c.pieces.begin(), c.pieces.end());
    SplitString(c.text, &pieces, c.delimiters);
    EXPECT_EQ(pieces, expected) << c.text << " at " << c.delimiters;
  }
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
                           {"ab", 0, "ab", "ab"},
                           {"ab", -1, "ab", "ab"},
                           {"ab", INT_MIN, "ab", "ab"}}) {
    EXPECT_EQ(Center(c.text, c.width, '-'), c.centred) << c.text << " in " << c.width;
    EXPECT_EQ(leftAlign(c.text, c.width, '-'), c.leftAligned) << c.text << " in " << c.width;
  }
}

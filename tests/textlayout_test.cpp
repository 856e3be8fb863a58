#include "utils/textlayout.h"

#include <gtest/gtest.h>

#include <string>

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
                           {"ab", -1, "ab", "ab"}}) {
    EXPECT_EQ(Center(c.text, c.width, '-'), c.centred) << c.text << " in " << c.width;
    EXPECT_EQ(leftAlign(c.text, c.width, '-'), c.leftAligned) << c.text << " in " << c.width;
  }
}

// Blocks of a reply as text boxes and tables.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "qordex/qordeximpl.h"
#include "utils/textlayout.h"

namespace {

// Spaces that a box or a column is wider than its longest text.
constexpr std::size_t kPadding = 4;

std::vector<std::string> SplitCells(const std::string& line) {
  std::vector<std::string> cells;
  SplitString(line, &cells, ",");
  return cells;
}

std::size_t LongestLength(const std::vector<std::string>& texts) {
  std::size_t longest = 0;
  for (const std::string& text : texts) longest = std::max(longest, text.size());
  return longest;
}

void PrintCells(const std::vector<std::string>& cells, int width) {
  for (const std::string& cell : cells) std::printf("%s", Center(cell, width, ' ').c_str());
}

}  // namespace

int QORDEXImpl::PrintString(const std::string& title, const std::vector<std::string>& lines) {
  if (title.empty() || lines.empty()) return 0;

  std::vector<std::string> pieces;
  for (const std::string& line : lines) SplitString(line, &pieces, "\n");
  const int width = static_cast<int>(std::max(title.size(), LongestLength(pieces)) + kPadding);

  const std::string rule = Center("", width, '-');
  std::puts(rule.c_str());
  std::puts(Center(title, width, ' ').c_str());
  std::puts(rule.c_str());
  for (const std::string& piece : pieces) std::puts(leftAlign(piece, width, ' ').c_str());
  return 0;
}

int QORDEXImpl::PrintList(const std::string& title, const std::vector<std::string>& lines) {
  if (title.empty() || lines.empty()) return 0;

  const std::vector<std::string> header = SplitCells(title);
  std::size_t longest = LongestLength(header);
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : lines) {
    rows.push_back(SplitCells(line));
    longest = std::max(longest, LongestLength(rows.back()));
  }
  if (header.size() != rows.front().size()) return 0;

  const int width = static_cast<int>(longest + kPadding);
  const std::string rule = Center("", static_cast<int>(header.size()) * width, '-');
  std::puts(rule.c_str());
  PrintCells(header, width);
  std::printf("\n%s\n", rule.c_str());
  for (const std::vector<std::string>& row : rows) {
    PrintCells(row, width);
    std::putchar('\n');
  }
  return 0;
}

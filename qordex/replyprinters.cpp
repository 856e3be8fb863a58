#include "qordex/replyprinters.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"
#include "qordex/qordexmessage.pb.h"
#include "qordex/qordexmessagestring.h"
#include "utils/textlayout.h"

namespace {

int RejectReply() {
  std::puts("Invalid reply from server");
  return kStatusExchangeFailed;
}

// Returns what stands before the first zero byte; the rest of a reply's text does not count.
std::string CutAtZero(const std::string& text) { return text.substr(0, text.find('\0')); }

std::vector<std::string> Lines(const QORDEXMessage::QDXCmd& cmd) {
  std::vector<std::string> lines;
  for (const std::string& argument : cmd.arguments()) lines.push_back(CutAtZero(argument));
  return lines;
}

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

// The width of a box or a column: 4 bytes more than its longest text.
int PaddedWidth(std::size_t longest) { return static_cast<int>(longest) + 4; }

void PrintCells(const std::vector<std::string>& cells, int width) {
  for (const std::string& cell : cells) std::printf("%s", Center(cell, width, ' ').c_str());
}

}  // namespace

int PrintReply(const QORDEXMessageString& reply) {
  const auto capacity = static_cast<int32_t>(sizeof(reply.data));
  if (reply.length < 0 || reply.length > capacity) return RejectReply();

  QORDEXMessage message;
  if (!message.ParseFromArray(reply.data, reply.length) || message.cmds().empty()) return kStatusOk;

  const QORDEXMessage::QDXCmd& first = message.cmds(0);
  const bool isTyped = CutAtZero(first.options()) == "type";
  if (message.cmds_size() == 1) {
    if (isTyped) return kStatusOk;
    for (const std::string& line : Lines(first)) std::puts(line.c_str());
    return kStatusOk;
  }

  if (!isTyped) return kStatusOk;
  if (first.arguments().empty()) return RejectReply();
  const std::string typeWord = CutAtZero(first.arguments(0));
  for (int i = 1; i < message.cmds_size(); ++i) {
    const std::string title = CutAtZero(message.cmds(i).options());
    const std::vector<std::string> lines = Lines(message.cmds(i));
    if (typeWord == "string") QORDEXImpl::PrintString(title, lines);
    if (typeWord == "list") QORDEXImpl::PrintList(title, lines);
  }
  return kStatusOk;
}

int QORDEXImpl::PrintString(const std::string& title, const std::vector<std::string>& lines) {
  if (title.empty() || lines.empty()) return 0;

  std::vector<std::string> pieces;
  for (const std::string& line : lines) SplitString(line, &pieces, "\n");
  const int width = PaddedWidth(std::max(title.size(), LongestLength(pieces)));

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

  const int width = PaddedWidth(longest);
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

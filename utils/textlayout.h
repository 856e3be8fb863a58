// Layout of reply text. Strings are byte strings: every length and width counts bytes, so UTF-8
// text is padded by its encoded length.

#pragma once

#include <string>
#include <vector>

// Cuts `text` at every byte that occurs in `delimiters` and appends the pieces to `pieces`. Pieces
// are never empty: runs of delimiters count as one, and those at either end produce nothing.
void SplitString(std::string text, std::vector<std::string>* pieces, const std::string& delimiters);

// Pads `text` with `fill` on both sides to `width` bytes; an odd remainder goes to the right. Text
// that is as wide as `width` or wider is returned whole.
std::string Center(std::string text, int width, char fill);

// Pads `text` with `fill` on the right to `width` bytes. Text that is as wide as `width` or wider
// is returned whole.
std::string leftAlign(const std::string& text, int width, char fill);

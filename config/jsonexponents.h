// Negative exponents of JSON numbers that RapidJSON's parser cannot add up.
//
// It keeps an exponent and the count of decimals before it as ints. With an exponent like that of
// 0.00000000001e-2147483639 their sum overflows, and the parser reads outside its table of powers.
// A positive exponent is refused above 308 plus that count, before it overflows.

#pragma once

#include <string>

// Whether `text` may hold such an exponent: an "e", a minus, and nine digits or more without
// leading zeros.
bool HasLongNegativeExponent(const std::string& text);

// Returns `text` without such exponents. The parser accepts or refuses it as it does `text`, and
// reads the same values: a number with such an exponent is 0, and stays so with eight of its
// digits. Spaces take the place of the others.
std::string WithoutLongNegativeExponents(std::string text);

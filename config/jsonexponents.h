// Exponents of JSON numbers that RapidJSON's parser cannot add up.
//
// It keeps an exponent and the count of decimals before it as ints. With an exponent like that of
// 0.00000000001e-2147483639 their sum overflows, and the parser reads outside its table of powers.

#pragma once

#include <string>

// Whether `text` may hold such an exponent: an "e" with nine digits or more after its sign.
bool MayHoldExtremeExponent(const std::string& text);

// Returns JSON text that has the same values and is refused or not as `text` is, without such
// exponents. A number that has one is 0 or too big to the parser, and stays so with one of fewer
// digits in its place.
std::string WithoutExtremeExponents(std::string text);

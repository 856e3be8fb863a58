// Exponents of JSON numbers that are too small for RapidJSON's parser.
//
// The parser adds an exponent to the count of decimals before it as ints. For an exponent like that
// of 0.00000000001e-2147483639 the sum overflows, and the parser reads outside its table of powers.

#pragma once

#include <string>

// Whether `text` may hold such an exponent: an "e-" with nine digits or more after it.
bool MayHoldTinyExponent(const std::string& text);

// Returns JSON text of the same values without such exponents: numbers that have one are 0 to the
// parser, and stay so with -99999999 in its place.
std::string WithoutTinyExponents(std::string text);

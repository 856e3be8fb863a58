// Negative exponents of JSON numbers that RapidJSON's parser cannot add up.
//
// It keeps an exponent and the count of decimals before it as ints. With an exponent like that of
// 0.00000000001e-2147483639 their sum overflows, and the parser reads outside its table of powers.
// A positive exponent is refused above 308 plus the count of decimals, and so cannot overflow in a
// text below 200 MB.

#pragma once

#include <string>

// Whether `text` may hold such an exponent: an "e", a minus, and nine digits or more without
// leading zeros.
bool HasLongNegativeExponent(const std::string& text);

// Returns JSON text that has the same values and is refused or not as `text` is, without such
// exponents. A number that has one is 0 to the parser, and stays so with eight of its digits;
// spaces take the place of the others.
std::string WithoutLongNegativeExponents(std::string text);

// Powers, sines and cosines whose last bit depends on no C library: computed to about 100 bits from
// additions, multiplications and divisions of doubles alone, each rounded by itself, and rounded
// once at the end. They are what a correctly rounded function gives, unless the true value lies
// within 2^-95 of its size of the middle between two doubles; even then they are the same
// everywhere.
//
// Sums and products of two doubles without error: T. J. Dekker, "A floating-point technique for
// extending the available precision", Numerische Mathematik 18, 1971.
#pragma once

#include <cstdint>

namespace ombrilo {

// base to the power of any exponent, which may be infinite or not a number, as C's pow() has it.
double Power(uint8_t base, double exponent);
// The same to 2^-40 of its size, in a tenth of the time; not of base 0, and for exponents below 100
// in size.
double NearPower(uint8_t base, double exponent);

// For angles in radians, up to 8 in size.
double Sine(double angle);
double Cosine(double angle);

}  // namespace ombrilo

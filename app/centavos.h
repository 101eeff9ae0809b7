#pragma once

#include <QtGlobal>

#include <cmath>

// Money exact to the cent, for every sum the console shows: amounts are rounded to whole cents
// once, and sums and differences are worked in whole cents, so rows add up to their totals and
// no floating-point residue turns a break-even into a red "-0.00".

// A figure already in cents (a commission or prize of a whole-cents amount) rounded to the
// nearest cent, halves away from zero. What is no reasonable amount (not finite, or a trillion
// or more) counts as 0.
inline qint64 centavosCercanos(double centavos)
{
    // Also false for NaN.
    if (!(std::fabs(centavos) < 1e14))
        return 0;
    return qint64(std::llround(centavos));
}

// Whole cents of a money figure, by the same rule.
inline qint64 aCentavos(double monto)
{
    return centavosCercanos(monto * 100.0);
}

inline double deCentavos(qint64 centavos)
{
    return double(centavos) / 100.0;
}

// The figure rounded to the cent.
inline double redondearCentavos(double monto)
{
    return deCentavos(aCentavos(monto));
}

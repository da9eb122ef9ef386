#pragma once

#include <QtGlobal>

#include <numeric>

namespace desk
{

/// An exact ratio, kept in lowest terms with a positive denominator. Frame rates are edit units a second: 30000/1001.
struct Rational {
    qint64 num = 0;
    qint64 den = 1;

    constexpr Rational() = default;

    constexpr Rational(qint64 numerator, qint64 denominator) : num(numerator), den(denominator)
    {
        const qint64 divisor = std::gcd(num, den);
        if (divisor > 1) {
            num /= divisor;
            den /= divisor;
        }
        if (den < 0) {
            num = -num;
            den = -den;
        }
    }

    constexpr bool isValid() const { return num > 0 && den > 0; }

    constexpr double toDouble() const { return den == 0 ? 0.0 : double(num) / double(den); }

    friend constexpr bool operator==(Rational a, Rational b) { return a.num == b.num && a.den == b.den; }

    friend constexpr bool operator!=(Rational a, Rational b) { return !(a == b); }
};

/// The first audio sample of frame `frame`: floor(frame * sampleRate / rate). The samples of a frame run from here to
/// the first sample of the next one, which gives the usual cadences (1601, 1602, ... at 30000/1001) without drift.
constexpr qint64 firstSampleOfFrame(qint64 frame, Rational rate, qint64 sampleRate)
{
    return frame * sampleRate * rate.den / rate.num;
}

} // namespace desk

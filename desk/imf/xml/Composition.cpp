#include "desk/imf/xml/Composition.h"

#include <QSet>

namespace desk::imf
{

std::optional<qint64> sequenceDuration(const Sequence& sequence, Rational editRate)
{
    // A common clock of all rates in use would overflow; exact fractions of the edit unit do not, rate by rate.
    qint64 whole = 0;
    qint64 numerator = 0;
    qint64 denominator = 1;
    for (const Resource& one : sequence.resources) {
        const Rational rate = one.editRate.isValid() ? one.editRate : editRate;
        const Rational unit(editRate.num * rate.den, editRate.den * rate.num);
        qint64 ticks = 0;
        qint64 scaled = 0;
        if (one.duration() < 0 || __builtin_mul_overflow(one.duration(), one.repeatCount, &ticks) ||
            __builtin_mul_overflow(ticks, unit.num, &scaled))
            return {};
        qint64 left = 0;
        qint64 right = 0;
        qint64 common = 0;
        if (__builtin_mul_overflow(numerator, unit.den, &left) ||
            __builtin_mul_overflow(scaled % unit.den, denominator, &right) ||
            __builtin_mul_overflow(denominator, unit.den, &common) ||
            __builtin_add_overflow(whole, scaled / unit.den, &whole))
            return {};
        qint64 sum = 0;
        if (__builtin_add_overflow(left, right, &sum) || __builtin_add_overflow(whole, sum / common, &whole))
            return {};
        const qint64 divisor = std::gcd(sum % common, common);
        numerator = sum % common / divisor;
        denominator = common / divisor;
    }
    return numerator == 0 ? std::optional<qint64>(whole) : std::nullopt;
}

std::optional<qint64> Composition::duration() const
{
    qint64 sum = 0;
    for (const Segment& segment : segments) {
        if (segment.sequences.isEmpty())
            continue;
        const auto image = std::find_if(segment.sequences.cbegin(), segment.sequences.cend(),
                                        [](const Sequence& one) { return one.kind == SequenceKind::MainImage; });
        const Sequence& measure = image == segment.sequences.cend() ? segment.sequences.first() : *image;
        const std::optional<qint64> part = sequenceDuration(measure, editRate);
        if (!part || __builtin_add_overflow(sum, *part, &sum))
            return {};
    }
    return sum;
}

QVector<QUuid> referredAssets(const Composition& composition)
{
    QVector<QUuid> result;
    QSet<QUuid> seen;
    for (const Segment& segment : composition.segments) {
        for (const Sequence& sequence : segment.sequences) {
            for (const Resource& one : sequence.resources) {
                if (one.trackFileId.isNull() || seen.contains(one.trackFileId))
                    continue;
                seen.insert(one.trackFileId);
                result.append(one.trackFileId);
            }
        }
    }
    return result;
}

} // namespace desk::imf

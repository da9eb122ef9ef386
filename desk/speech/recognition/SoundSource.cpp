#include "desk/speech/recognition/SoundSource.h"

#include <algorithm>
#include <cstdlib>

namespace desk::speech
{

int quietPlace(const QVector<qint16>& samples, int range)
{
    constexpr int window = soundRate / 5;
    int best = samples.size();
    qint64 least = -1;
    for (int at = std::max(0, samples.size() - range); at + window <= samples.size(); at += window / 2) {
        qint64 sum = 0;
        for (int i = at; i < at + window; ++i)
            sum += std::abs(int(samples[i]));
        if (least < 0 || sum < least) {
            least = sum;
            best = at + window / 2;
        }
    }
    return best;
}

} // namespace desk::speech

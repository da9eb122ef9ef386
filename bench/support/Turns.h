#pragma once

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

/// What two things cost the user-interface thread, measured in turns so that both meet the same state of the machine.
namespace turns
{

/// The time that this thread has computed, in milliseconds: what other programs do meanwhile does not count. Nothing
/// that is measured here waits.
inline double now()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// With what it leaves to the event loop.
inline double milliseconds(const std::function<void()>& action)
{
    const double start = now();
    action();
    QCoreApplication::processEvents();
    return now() - start;
}

inline double medianOf(std::vector<double> times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// Measures an action of its own; it gets the number of the round.
using Action = std::function<double(int round)>;

inline Action timed(std::function<void(int)> action)
{
    return [action = std::move(action)](int round) { return milliseconds([&] { action(round); }); };
}

inline double median(int rounds, const Action& measure)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round)
        times.push_back(measure(round));
    return medianOf(times);
}

struct Pair {
    double first;
    double second;
};

inline Pair medians(int rounds, const Action& first, const Action& second)
{
    std::vector<double> firstTimes;
    std::vector<double> secondTimes;
    for (int round = 0; round < rounds; ++round) {
        firstTimes.push_back(first(round));
        secondTimes.push_back(second(round));
    }
    return {medianOf(firstTimes), medianOf(secondTimes)};
}

/// @param limit of the ratio.
inline void print(const char* question, const Pair& times, const char* limit)
{
    std::printf("%s | %.3f x (%.3f against %.3f ms) | %s\n", question, times.first / times.second, times.first,
                times.second, limit);
}

} // namespace turns

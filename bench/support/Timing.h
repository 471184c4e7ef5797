#pragma once
// Timing for the benchmarks: milliseconds since a moment, and the median of a run.

#include <algorithm>
#include <chrono>
#include <vector>

namespace ht::bench
{

using Clock = std::chrono::steady_clock;

inline double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace ht::bench

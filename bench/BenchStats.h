#pragma once

#include <QElapsedTimer>
#include <QList>

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace nebra::bench {

// The middle value of a run of timings (the upper middle for an even count); 0 for none.
template <typename Container> double median(Container values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

// The timing below which the given fraction of a run lies (0.5 the median,
// 0.99 the p99); 0 for none.
template <typename Container> double percentile(Container values, double fraction)
{
    std::sort(values.begin(), values.end());
    if (values.empty())
        return 0;
    const auto last = values.size() - 1;
    return values[std::min(last, static_cast<decltype(last)>(fraction * double(values.size())))];
}

// Times in milliseconds of repeated runs of one operation.
struct Samples
{
    QList<double> ms;

    double median() const { return bench::median(ms); }
    double mean() const { return ms.isEmpty() ? 0 : std::accumulate(ms.begin(), ms.end(), 0.0) / ms.size(); }
    double max() const { return ms.isEmpty() ? 0 : *std::max_element(ms.begin(), ms.end()); }
};

// Runs operation(i) warm + runs times and keeps the times of the last runs.
template <typename Operation> Samples timed(int warm, int runs, Operation operation)
{
    Samples samples;
    QElapsedTimer clock;
    for (int i = 0; i < warm + runs; ++i) {
        clock.start();
        operation(i);
        const double ms = clock.nsecsElapsed() / 1e6;
        if (i >= warm)
            samples.ms << ms;
    }
    return samples;
}

inline void report(const char* what, const Samples& ours, const Samples& bare)
{
    std::printf("%-44s ours median %8.3f ms (mean %8.3f, max %8.3f) | bare median %8.3f ms | ratio %.2f\n",
                what, ours.median(), ours.mean(), ours.max(), bare.median(),
                bare.median() > 0 ? ours.median() / bare.median() : 0);
}

} // namespace nebra::bench

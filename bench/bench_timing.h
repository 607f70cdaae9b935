// Timing for the benchmarks: every call timed on its own, and the spread of the times of one kind
// of call (median, 10th and 90th percentile), printed one figure per line, name then value.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace bench {

inline double MicrosecondsOf(const std::function<void()>& call) {
    static const double ticksPerMicrosecond = [] {
        LARGE_INTEGER frequency;
        ::QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart) / 1e6;
    }();
    LARGE_INTEGER start, end;
    ::QueryPerformanceCounter(&start);
    call();
    ::QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) / ticksPerMicrosecond;
}

// The times of one kind of call, one per round.
class Series {
public:
    void Add(double microseconds) { m_samples.push_back(microseconds); }
    double Percentile(double fraction) const {
        std::vector<double> sorted = m_samples;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[static_cast<size_t>(fraction * static_cast<double>(sorted.size() - 1))];
    }
    double Median() const { return Percentile(0.5); }

private:
    std::vector<double> m_samples;
};

inline void Print(const std::string& name, double value) { std::printf("%s %.3f\n", name.c_str(), value); }

inline void PrintSeries(const std::string& name, const Series& series) {
    Print(name + "_median_us", series.Median());
    Print(name + "_p10_us", series.Percentile(0.1));
    Print(name + "_p90_us", series.Percentile(0.9));
}

}  // namespace bench

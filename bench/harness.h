// Ratio benchmarks: a subject and a floor, measured in turns in the same run, so that a machine that speeds up or
// slows down does so for both. A figure is the median of the rounds' ratios.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace bench {

// Keeps the compiler from removing the computation of value.
template <class Value>
inline void keep(const Value& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Seconds that one call of work takes, measured over calls of them.
template <class Work>
double secondsPerCall(Work& work, int calls) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

struct Comparison {
    double subject;  // median seconds per call
    double floor;
    double ratio;  // median of the rounds' ratios
};

template <class Subject, class Floor>
Comparison compare(Subject subject, Floor floor, int rounds, int callsPerRound) {
    std::vector<double> subjects;
    std::vector<double> floors;
    std::vector<double> ratios;
    secondsPerCall(subject, callsPerRound);  // warm-up
    secondsPerCall(floor, callsPerRound);
    for (int round = 0; round < rounds; ++round) {
        subjects.push_back(secondsPerCall(subject, callsPerRound));
        floors.push_back(secondsPerCall(floor, callsPerRound));
        ratios.push_back(subjects.back() / floors.back());
    }
    return {median(subjects), median(floors), median(ratios)};
}

// One line a figure: its name, its value and the limit that it is held to.
inline void figure(const char* name, double value, double limit) {
    std::printf("figure %s %.2f %.2f\n", name, value, limit);
}

}  // namespace bench

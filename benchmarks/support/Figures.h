#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Korvo::Bench {

/// Named numbers, printed as one line of JSON: what a measured program tells the runner.
class Figures
{
public:
    void add(const std::string &name, double value) { values.emplace_back(name, value); }
    void print() const;

private:
    std::vector<std::pair<std::string, double>> values;
};

/// Memory of this process that is resident now.
std::int64_t residentBytes();

/// From here on peakBytes() counts.
void resetPeak();
std::int64_t peakBytes();

/// Processor time of all threads of this process.
double processSeconds();
/// Processor time of the calling thread.
double threadSeconds();

/// What a piece of work costs this process, from start() to stop().
class Meter
{
public:
    void start();
    void stop();
    void addTo(Figures &figures) const;

private:
    std::chrono::steady_clock::time_point started;
    double wallSeconds = 0;
    double cpuSeconds = 0;
    std::int64_t idleBytes = 0;
    std::int64_t mostBytes = 0;
};

} // namespace Korvo::Bench

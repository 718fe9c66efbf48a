#include "support/Figures.h"

#include <sys/resource.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string_view>

namespace Korvo::Bench {
namespace {

constexpr std::int64_t KIBIBYTE = 1024;
constexpr double MICROSECONDS = 1e6;
constexpr double NANOSECONDS = 1e9;

/// A line of the kernel's account of this process, "VmRSS:   1234 kB".
std::int64_t statusBytes(std::string_view name)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (std::string_view(line).substr(0, name.size()) == name)
            return std::stoll(line.substr(name.size())) * KIBIBYTE;
    }
    return 0;
}

double secondsOf(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / MICROSECONDS;
}

} // namespace

void Figures::print() const
{
    std::printf("{");
    const char *separator = "";
    for (const auto &[name, value] : values) {
        std::printf("%s\"%s\":%.9g", separator, name.c_str(), value);
        separator = ",";
    }
    std::printf("}\n");
    std::fflush(stdout);
}

std::int64_t residentBytes()
{
    return statusBytes("VmRSS:");
}

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

std::int64_t peakBytes()
{
    return statusBytes("VmHWM:");
}

double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / NANOSECONDS;
}

void Meter::start()
{
    idleBytes = residentBytes();
    resetPeak();
    cpuSeconds = processSeconds();
    started = std::chrono::steady_clock::now();
}

void Meter::stop()
{
    wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    cpuSeconds = processSeconds() - cpuSeconds;
    mostBytes = peakBytes();
}

void Meter::addTo(Figures &figures) const
{
    figures.add("wallSeconds", wallSeconds);
    figures.add("cpuSeconds", cpuSeconds);
    figures.add("idleBytes", static_cast<double>(idleBytes));
    figures.add("peakBytes", static_cast<double>(mostBytes));
}

} // namespace Korvo::Bench

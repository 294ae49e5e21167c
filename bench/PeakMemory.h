// The memory that the reading of a file takes at its peak.
#pragma once

#include <cstdint>
#include <string>

namespace orv::bench {

// The resident memory that ReadTable adds to a process at its peak, in bytes, the table that it returns included.
// Measured in a new process of this program, where no memory that was freed before can be used again unseen. Throws
// std::runtime_error when that process fails.
std::uint64_t PeakMemoryOfReading(const std::string& path);

// The work of that process: main calls it when its arguments are kReadForPeak and a path. Writes the bytes to standard
// output and returns the exit code.
inline constexpr const char* kReadForPeak = "--read-for-peak-memory";
int ReadForPeakMemory(const std::string& path);

}  // namespace orv::bench

#include "PeakMemory.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "standalone/tables/TableReaders.h"

namespace orv::bench {

namespace {

// A figure of /proc/self/status, which tells it in kB.
std::uint64_t StatusBytes(std::string_view name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != name) continue;
    std::uint64_t kilobytes = 0;
    if (status >> kilobytes) return kilobytes * 1024;
  }
  throw std::runtime_error("/proc/self/status has no figures of memory");
}

// What the new process writes to its standard output.
std::string OutputOf(const std::string& path) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  std::string flag = kReadForPeak;
  std::string file = path;
  char* arguments[] = {program.data(), flag.data(), file.data(), nullptr};
  pid_t process = -1;
  const int result = posix_spawn(&process, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string output;
  char buffer[64];
  for (ssize_t size = 0; result == 0 && (size = read(ends[0], buffer, sizeof buffer)) > 0;) {
    output.append(buffer, static_cast<std::size_t>(size));
  }
  close(ends[0]);
  if (result != 0) throw std::system_error(result, std::generic_category(), program);
  int status = 0;
  if (waitpid(process, &status, 0) != process || status != 0) throw std::runtime_error("measuring the memory failed");
  return output;
}

}  // namespace

std::uint64_t PeakMemoryOfReading(const std::string& path) {
  const std::string output = OutputOf(path);
  std::uint64_t bytes = 0;
  const auto [end, error] = std::from_chars(output.data(), output.data() + output.size(), bytes);
  if (error != std::errc() || bytes == 0) throw std::runtime_error("measuring the memory failed: " + output);
  return bytes;
}

int ReadForPeakMemory(const std::string& path) {
  try {
    // Whatever reading needs once, such as the tables of the C library, is no part of it.
    const std::uint64_t before = StatusBytes("VmRSS:");
    const MemoryTable table = ReadTable(path);
    const std::uint64_t peak = StatusBytes("VmHWM:");
    // The table is looked at afterwards, so it was there at the peak.
    if (table.CaseCount() == 0 || peak <= before) return 1;
    std::printf("%llu", static_cast<unsigned long long>(peak - before));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "orvcox_bench: %s\n", error.what());
    return 1;
  }
}

}  // namespace orv::bench

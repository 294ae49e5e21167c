// RunningProgram: the real program in a process of its own, within a bounded time.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace orv::testing {

struct ProgramStart {
  std::filesystem::path Program;
  std::vector<std::string> Arguments;  // without the program's name
  std::filesystem::path Folder;        // where it runs
  // File descriptors that become its standard input, output and error. They stay the caller's.
  int StandardInput = -1;
  int StandardOutput = -1;
  int StandardError = -1;
};

// A process that cannot be started fails the case with the exit code 127.
class RunningProgram {
 public:
  // The process takes Ctrl-C, whatever this one does, and has no right to pass over the permissions of files, even when
  // the superuser runs the tests. Throws std::system_error when the system has no room for another process.
  explicit RunningProgram(const ProgramStart& start);
  // Kills a process that has not ended.
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  void Send(int signal) const;
  // Waits for the end. Returns false when the time is over first.
  bool WaitFor(std::chrono::milliseconds time);

  // After the end: the exit code, or 128 plus the number of the signal that ended the process.
  int ExitCode() const { return m_exitCode; }

 private:
  pid_t m_process = -1;
  bool m_ended = false;
  int m_exitCode = -1;
};

}  // namespace orv::testing

#include "cli/RunningProgram.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

namespace orv::testing {

namespace {

constexpr int kCannotStart = 127;
constexpr int kSignalBase = 128;
constexpr std::chrono::milliseconds kGlance{2};

// Runs in the new process; only calls that are safe after a fork.
[[noreturn]] void BecomeProgram(const ProgramStart& start, char* const* arguments) {
  std::signal(SIGINT, SIG_DFL);
  // Without effect for anyone but the superuser, who could write into a folder that is read-only otherwise.
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
  const bool ready = chdir(start.Folder.c_str()) == 0 && dup2(start.StandardInput, STDIN_FILENO) >= 0 &&
                     dup2(start.StandardOutput, STDOUT_FILENO) >= 0 && dup2(start.StandardError, STDERR_FILENO) >= 0;
  if (ready) execv(start.Program.c_str(), arguments);
  _exit(kCannotStart);
}

}  // namespace

RunningProgram::RunningProgram(const ProgramStart& start) {
  std::vector<std::string> words = {start.Program.filename().string()};
  words.insert(words.end(), start.Arguments.begin(), start.Arguments.end());
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  m_process = fork();
  if (m_process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (m_process == 0) BecomeProgram(start, arguments.data());
}

RunningProgram::~RunningProgram() {
  if (m_ended) return;
  kill(m_process, SIGKILL);
  waitpid(m_process, nullptr, 0);
}

void RunningProgram::Send(int signal) const {
  if (!m_ended) kill(m_process, signal);
}

bool RunningProgram::WaitFor(std::chrono::milliseconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (!m_ended) {
    int status = 0;
    if (waitpid(m_process, &status, WNOHANG) == m_process) {
      m_ended = true;
      m_exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
      return true;
    }
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(kGlance);
  }
  return true;
}

}  // namespace orv::testing

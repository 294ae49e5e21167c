#include "cli/PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>  // posix_openpt and its like, which <cstdlib> lacks
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace orv::testing {

namespace {

constexpr std::chrono::milliseconds kGlance{10};

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

PseudoTerminal::PseudoTerminal() {
  m_screenSide = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (m_screenSide < 0) Fail("posix_openpt");
  if (grantpt(m_screenSide) != 0 || unlockpt(m_screenSide) != 0) Fail("grantpt");
  m_programSide = open(ptsname(m_screenSide), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (m_programSide < 0) Fail("open of a pseudo terminal");
}

PseudoTerminal::~PseudoTerminal() {
  close(m_programSide);
  close(m_screenSide);
}

bool PseudoTerminal::WaitForText(std::string_view text, std::chrono::milliseconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (m_shown.find(text) == std::string::npos) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    Read(kGlance);
  }
  return true;
}

const std::string& PseudoTerminal::Shown() {
  Read(std::chrono::milliseconds(0));
  return m_shown;
}

void PseudoTerminal::Read(std::chrono::milliseconds time) {
  pollfd wanted = {m_screenSide, POLLIN, 0};
  while (poll(&wanted, 1, static_cast<int>(time.count())) > 0 && (wanted.revents & POLLIN) != 0) {
    std::array<char, 4096> buffer{};
    const ssize_t size = read(m_screenSide, buffer.data(), buffer.size());
    if (size <= 0) return;
    m_shown.append(buffer.data(), static_cast<std::size_t>(size));
    time = std::chrono::milliseconds(0);
  }
}

}  // namespace orv::testing

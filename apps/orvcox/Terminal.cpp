#include "apps/orvcox/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace orv {

namespace {

constexpr int kNarrowest = 40;
constexpr int kWidest = 200;  // longer lines are hard to follow

int DescriptorOf(const std::ostream& stream) {
  if (&stream == &std::cout) return STDOUT_FILENO;
  if (&stream == &std::cerr) return STDERR_FILENO;
  return -1;
}

}  // namespace

Terminal DescribeTerminal(const std::ostream& stream) {
  Terminal terminal;
  const int descriptor = DescriptorOf(stream);
  terminal.IsTerminal = descriptor >= 0 && isatty(descriptor) != 0;
  if (!terminal.IsTerminal) return terminal;
  terminal.Bold = std::getenv("NO_COLOR") == nullptr;
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    terminal.Width = std::clamp<int>(size.ws_col, kNarrowest, kWidest);
  }
  return terminal;
}

}  // namespace orv

// What the program writes to, as far as its looks depend on it.
#pragma once

#include <iosfwd>

namespace orv {

struct Terminal {
  bool IsTerminal = false;
  int Width = 80;     // characters of a line
  bool Bold = false;  // bold type is welcome: a terminal, and NO_COLOR is not set
};

// For std::cout and std::cerr; any other stream is no terminal.
Terminal DescribeTerminal(const std::ostream& stream);

}  // namespace orv

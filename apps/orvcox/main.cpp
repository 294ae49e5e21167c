// orvcox: Cox proportional hazards regression on the command line.
#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "apps/orvcox/CommandLine.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  // A file that grows beyond the limit of the shell is an error to be told, and no reason to end with half a file.
  std::signal(SIGXFSZ, SIG_IGN);
  return orv::RunCommandLine({argv + 1, argv + argc}, std::cout, std::cerr);
}

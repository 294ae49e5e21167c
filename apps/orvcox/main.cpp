// orvcox: Cox proportional hazards regression on the command line.
#include <iostream>
#include <string>
#include <vector>

#include "apps/orvcox/CommandLine.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  return orv::RunCommandLine({argv + 1, argv + argc}, std::cout, std::cerr);
}

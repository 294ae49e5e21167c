// Plays one text case: case_runner PROGRAM REPOSITORY CASE. Exit code 0 when all was as the case expects.
//
// With ORV_UPDATE_CASES=1 in the environment a case that fails also gets what was found as its expectation, to be read
// by a person before it is kept.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include "cli/CaseFile.h"
#include "cli/CaseRun.h"

namespace {

bool MayUpdate() {
  const char* update = std::getenv("ORV_UPDATE_CASES");
  return update != nullptr && std::string_view(update) == "1";
}

int Play(const std::filesystem::path& program, const std::filesystem::path& root, const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const orv::testing::CaseFile expected = orv::testing::ParseCase(text, root, path.string());
  const orv::testing::CaseOutcome outcome = orv::testing::RunCase(expected, program);
  if (outcome.Problems.empty()) return 0;
  std::cout << outcome.Problems;
  if (!MayUpdate()) return 1;
  std::ofstream(path, std::ios::binary) << orv::testing::FormatCase(outcome.Actual);
  std::cout << path.string() << ": rewritten. Read it before you keep it.\n";
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: case_runner PROGRAM REPOSITORY CASE\n";
    return 2;
  }
  try {
    return Play(std::filesystem::absolute(argv[1]), argv[2], argv[3]);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}

// The folders of the module depend one way. The linker sees most of it; this test sees every #include line.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orv {
namespace {

namespace fs = std::filesystem;

// Lowest first.
const std::vector<std::string> kLayers = {"host", "data", "fit", "inference", "select", "output", "core", "ui"};

// The options and the analysis object: every object reaches them through its owner.
const std::set<std::string> kOpenHeaders = {"core/CoxSettings.h", "core/CCoxPH.h"};

std::set<std::string> WordsOf(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

const std::set<std::string> kStandardHeaders = WordsOf(
    "algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono "
    "cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp "
    "csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception "
    "execution filesystem format forward_list fstream functional future initializer_list iomanip ios iosfwd "
    "iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers numeric "
    "optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex "
    "source_location span sstream stack stdexcept stop_token streambuf string string_view strstream "
    "syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility "
    "valarray variant vector version");

// Intrinsics of the compiler, for the floating-point control word.
const std::set<std::string> kIntrinsics = {"xmmintrin.h", "pmmintrin.h"};

int LayerOf(const std::string& folder) {
  const auto found = std::find(kLayers.begin(), kLayers.end(), folder);
  return found == kLayers.end() ? -1 : static_cast<int>(found - kLayers.begin());
}

// What is wrong with a line of a file in `folder`; empty when nothing is.
std::string ProblemOf(const std::string& folder, const std::string& line) {
  static const std::regex directive(R"(^\s*#\s*include(_next)?\b\s*(.*)$)");
  static const std::regex quoted(R"rx(^"([^"]*)".*$)rx");
  static const std::regex angled(R"(^<([^>]*)>.*$)");
  std::smatch parts;
  if (!std::regex_match(line, parts, directive)) return {};
  const std::string target = parts[2];
  if (std::regex_match(target, parts, angled)) {
    const std::string header = parts[1];
    if (kStandardHeaders.count(header) != 0 || kIntrinsics.count(header) != 0) return {};
    return "<" + header + "> is not of the standard library";
  }
  if (!std::regex_match(target, parts, quoted)) return "an include that this test cannot read: " + target;
  const std::string header = parts[1];
  const std::size_t slash = header.find('/');
  if (slash == std::string::npos) return "\"" + header + "\" names no folder";
  const std::string from = header.substr(0, slash);
  if (LayerOf(from) < 0) return "\"" + header + "\" is not of the module";
  if (kOpenHeaders.count(header) != 0) return {};
  if (LayerOf(from) > LayerOf(folder)) return folder + " must not include \"" + header + "\"";
  return {};
}

TEST(Layering, TheCheckerKnowsWhatIsWrong) {
  struct {
    const char* Folder;
    const char* Line;
    bool Wrong;
  } const cases[] = {
      {"fit", "#include \"data/CCoxData.h\"", false},
      {"fit", "#include \"fit/LDL.h\"", false},
      {"fit", "#include \"host/Host.h\"  // with a remark", false},
      {"fit", "  #  include \"data/CCoxData.h\"", false},
      {"data", "#include \"core/CoxSettings.h\"", false},
      {"host", "#include \"core/CCoxPH.h\"", false},
      {"ui", "#include \"host/Host.h\"", false},
      {"core", "#include \"core/StringTable.h\"", false},
      {"fit", "#include <vector>", false},
      {"fit", "#include <xmmintrin.h>", false},
      {"fit", "// #include \"ui/Dialog.h\"", false},
      {"fit", "int include = 0;", false},
      {"fit", "", false},
      {"data", "#include \"fit/CCoxFit.h\"", true},
      {"host", "#include \"data/CCoxData.h\"", true},
      {"fit", "#include \"core/StringTable.h\"", true},
      {"fit", "#include \"inference/ExponentGuard.h\"", true},
      {"inference", "#include \"output/FitTables.h\"", true},
      {"select", "#include \"output/FitTables.h\"", true},
      {"core", "#include \"ui/Dialog.h\"", true},
      {"fit", "  #  include \"ui/Dialog.h\"", true},
      {"ui", "#include \"standalone/host/StandaloneHost.h\"", true},
      {"ui", "#include \"apps/orvcox/CommandLine.h\"", true},
      {"ui", "#include \"../standalone/host/StandaloneHost.h\"", true},
      {"fit", "#include \"LDL.h\"", true},
      {"fit", "#include \"fmt/core.h\"", true},
      {"fit", "#include <fmt/core.h>", true},
      {"fit", "#include <boost/math/distributions.hpp>", true},
      {"fit", "#include <unistd.h>", true},
      {"fit", "#include <immintrin.h>", true},
      {"fit", "#include SOME_MACRO", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(!ProblemOf(c.Folder, c.Line).empty(), c.Wrong)
        << c.Folder << ": " << c.Line << ": " << ProblemOf(c.Folder, c.Line);
  }
}

struct SourceFile {
  std::string Folder;  // the folder below src
  fs::path Path;
};

std::vector<SourceFile> SourceFiles() {
  const fs::path source = fs::path(ORV_SOURCE_DIR) / "src";
  std::vector<SourceFile> files;
  for (const auto& entry : fs::recursive_directory_iterator(source)) {
    const std::string extension = entry.path().extension().string();
    if (!entry.is_regular_file() || (extension != ".h" && extension != ".cpp")) continue;
    files.push_back({fs::relative(entry.path(), source).begin()->string(), entry.path()});
  }
  return files;
}

TEST(Layering, NoFolderIncludesWhatStandsAboveIt) {
  int includes = 0;
  const std::vector<SourceFile> files = SourceFiles();
  for (const SourceFile& file : files) {
    ASSERT_GE(LayerOf(file.Folder), 0) << file.Path << " is in no folder of the module";
    std::ifstream stream(file.Path);
    ASSERT_TRUE(stream) << file.Path;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
      ++number;
      if (line.rfind("#include", 0) == 0) ++includes;
      const std::string problem = ProblemOf(file.Folder, line);
      EXPECT_TRUE(problem.empty()) << file.Path.string() << ", line " << number << ": " << problem;
    }
  }
  EXPECT_GT(files.size(), 50U) << "the sources were not found";
  EXPECT_GT(includes, 150) << "the includes were not found";
}

// Every folder may include them, so they may bring nothing of a folder but the lowest with them.
TEST(Layering, TheOpenHeadersIncludeNothingButTheHostAndEachOther) {
  for (const std::string& header : kOpenHeaders) {
    std::ifstream stream(fs::path(ORV_SOURCE_DIR) / "src" / header);
    ASSERT_TRUE(stream) << header;
    for (std::string line; std::getline(stream, line);) {
      EXPECT_EQ(ProblemOf("host", line), "") << header;
    }
  }
}

}  // namespace
}  // namespace orv

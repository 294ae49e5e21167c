#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "apps/orvcox/CommandLine.h"
#include "apps/orvcox/pages/ManualPage.h"

namespace orv::pages {
namespace {

std::string PageOfTheProgram() {
  std::string page;
  UseDeclaredProgram([&](const CLI::App& program, const WordsOfOptions& words) {
    page = WriteManualPage(OutlineProgram(program, words, ORV_VERSION));
  });
  return page;
}

std::string TextOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// The number of the first line that differs, from 1, and 0 when none does.
int FirstDifference(const std::string& a, const std::string& b) {
  if (a == b) return 0;
  const auto [end, ignored] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return static_cast<int>(std::count(a.begin(), end, '\n')) + 1;
}

TEST(ManualPage, TextsAreShownLetterByLetter) {
  struct {
    const char* what;
    const char* text;
    const char* roff;
  } const cases[] = {
      {"an option, to be copied", "--p-enter", "\\-\\-p\\-enter"},
      {"a backslash", "a\\b", "a\\eb"},
      {"a point at the start", ".orv files", "\\&.orv files"},
      {"a point elsewhere", "an .orv file", "an .orv file"},
      {"an apostrophe, which begins a request", "'test'", "\\(aqtest\\(aq"},
      {"a double quote, which ends an argument", "\"E, E\"", "\\(dqE, E\\(dq"},
      {"signs with typographic forms", "`^~", "\\(ga\\(ha\\(ti"},
      {"nothing", "", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(RoffText(c.text), c.roff) << c.what;
}

TEST(ManualPage, HelpIsFilledButExamplesAreNot) {
  ProgramOutline outline;
  outline.Version = "1.2";
  outline.Program.Name = "tool";
  outline.Program.Description = "A tool.";
  CommandOutline command;
  command.Name = "cut";
  command.Arguments = {{"FILE", "what to cut"}};
  const std::string longHelp =
      "Cuts the file at each of the points, and keeps the parts that are longer than .it anyhow";
  command.Groups = {{"Points", {{{"-a", "--at"}, "X", 1, true, false, {}, longHelp}}}};
  command.Notes = {{"Examples", {"tool cut x \\", "    --at 5"}}};
  outline.Commands = {command};
  const std::string page = WriteManualPage(outline);
  EXPECT_NE(page.find("\n.TH TOOL 1 \"\" \"tool 1.2\""), std::string::npos) << page;
  const auto holds = [&](const std::string& part) { return page.find(part) != std::string::npos; };
  EXPECT_TRUE(holds("\\fBtool cut\\fR [\\fIOPTIONS\\fR] \\fIFILE\\fR\n")) << page;
  EXPECT_TRUE(holds(".SS \"Points\"\n.TP\n\\fB\\-a\\fR, \\fB\\-\\-at\\fR \\fIX\\fR\nCuts the file")) << page;
  EXPECT_TRUE(holds("longer than\n\\&.it anyhow. Repeatable.\n")) << page;
  EXPECT_TRUE(holds(".nf\ntool cut x \\e\n    \\-\\-at 5\n.fi\n")) << page;
}

TEST(ManualPage, ExitCodesAreAList) {
  ProgramOutline outline;
  outline.Program.Notes = {{"", {"Exit codes: 0 done; 3 no file; 130 cancelled."}}};
  const std::string page = WriteManualPage(outline);
  EXPECT_NE(
      page.find(".SH \"EXIT STATUS\"\n.TP\n\\fB0\\fR\ndone.\n.TP\n\\fB3\\fR\nno file.\n.TP\n\\fB130\\fR\ncancelled.\n"),
      std::string::npos)
      << page;
}

// Rewritten with ORV_UPDATE_CASES=1 in the environment, and then a failure still.
TEST(ManualPage, OfTheProgramIsTheGoldenOne) {
  const std::filesystem::path golden = std::filesystem::path(ORV_SOURCE_DIR) / "tests/golden/orvcox.1";
  const std::string expected = TextOf(golden);
  const std::string page = PageOfTheProgram();
  EXPECT_EQ(FirstDifference(expected, page), 0) << "is the first line that differs from " << golden << '\n' << page;
  if (expected != page && std::getenv("ORV_UPDATE_CASES") != nullptr) std::ofstream(golden, std::ios::binary) << page;
}

}  // namespace
}  // namespace orv::pages

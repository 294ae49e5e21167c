#include <gtest/gtest.h>

#include <string>

#include "apps/orvcox/pages/ShellCompletion.h"

namespace orv::pages {
namespace {

ProgramOutline OutlineWith(const OptionOutline& option) {
  ProgramOutline outline;
  outline.Program.Name = "tool";
  CommandOutline command;
  command.Name = "cut";
  command.Arguments = {{"FILE", "what to cut"}};
  command.Groups = {{"Options", {option}}};
  outline.Commands = {command};
  return outline;
}

TEST(ShellCompletion, AWordInQuotesIsOneWord) {
  EXPECT_EQ(QuotedForShell("a b"), "'a b'");
  EXPECT_EQ(QuotedForShell("$(x) `y` \"z\""), "'$(x) `y` \"z\"'");
  EXPECT_EQ(QuotedForShell("arm = 'test'"), "'arm = '\\''test'\\'''");
}

// What zsh makes of them in a terminal, help included, is tested with the shells themselves.
TEST(ShellCompletion, InZshNothingInAHelpEndsIt) {
  const OptionOutline option{{"--at"}, "X:Y", 1, false, false, {}, "Points (a, b]: 'x' [see \\]"};
  const std::string text = WriteZshCompletion(OutlineWith(option));
  EXPECT_NE(text.find("    '--at=[Points (a, b\\]\\: '\\''x'\\'' \\[see \\\\\\]]:X\\:Y: ' \\\n"), std::string::npos)
      << text;
}

TEST(ShellCompletion, InZshEveryValueIsAskedForByItsName) {
  const OptionOutline option{{"--interval"}, "START STOP", 2, false, false, {}, "Interval"};
  const std::string text = WriteZshCompletion(OutlineWith(option));
  EXPECT_NE(text.find("'--interval=[Interval]:START: :STOP: '"), std::string::npos) << text;
}

}  // namespace
}  // namespace orv::pages

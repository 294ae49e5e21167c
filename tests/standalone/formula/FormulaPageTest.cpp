// docs/formulas.md says what is so: its formulas compile, its messages are the messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::Refusal;

std::vector<std::string> PageLines() {
  std::ifstream page(ORV_SOURCE_DIR "/docs/formulas.md");
  EXPECT_TRUE(page.is_open());
  std::vector<std::string> lines;
  for (std::string line; std::getline(page, line);) lines.push_back(line);
  return lines;
}

// The lines of all blocks of a kind.
std::vector<std::string> BlockLines(const std::string& kind) {
  std::vector<std::string> found;
  bool inside = false;
  for (const std::string& line : PageLines()) {
    if (line.starts_with("```")) {
      inside = line == "```" + kind;
    } else if (inside) {
      found.push_back(line);
    }
  }
  return found;
}

const std::vector<ValueLabel> kArms = {{1.0, "control"}, {2.0, "test"}};
const std::vector<ValueLabel> kSexes = {{1.0, "female"}, {2.0, "male"}};

FormulaNames PageNames() {
  return FormulaNames({{"age", nullptr, false},
                       {"arm", &kArms, false},
                       {"sex", &kSexes, false},
                       {"x", nullptr, false},
                       {"a", nullptr, false},
                       {"b", nullptr, false},
                       {"dose", nullptr, false},
                       {"entry", nullptr, true},
                       {"entry_delay", nullptr, false},
                       {"treated", nullptr, false},
                       {"transplant", nullptr, false},
                       {"ph.ecog", nullptr, false},
                       {"blood pressure", nullptr, false},
                       {"condition", nullptr, false}});
}

TEST(FormulaPage, ShowsFormulasThatCompile) {
  const std::vector<std::string> formulas = BlockLines("formula");
  EXPECT_GT(formulas.size(), 10U);
  for (const std::string& formula : formulas)
    EXPECT_EQ(Refusal(formula, PageNames(), TimeSymbol::Allowed), "compiled") << formula;
}

TEST(FormulaPage, ShowsMessagesToTheLetter) {
  const std::vector<std::string> lines = BlockLines("messages");
  EXPECT_GT(lines.size(), 10U);
  ASSERT_EQ(lines.size() % 2, 0U);
  for (std::size_t i = 0; i < lines.size(); i += 2) EXPECT_EQ(Refusal(lines[i], PageNames()), lines[i + 1]) << lines[i];
}

TEST(FormulaPage, ListsEveryFunction) {
  const std::regex form("`([a-z0-9]+)\\([a-z, ]+\\)`");
  std::vector<std::string> listed;
  bool inFunctions = false;
  for (const std::string& line : PageLines()) {
    if (line.starts_with("## ")) inFunctions = line == "## Functions";
    if (!inFunctions || !line.starts_with("| `")) continue;
    for (std::sregex_iterator match(line.begin(), line.end(), form), end; match != end; ++match) {
      const std::string text = match->str().substr(1, match->str().size() - 2);
      EXPECT_EQ(Refusal(text, PageNames()), "compiled") << text;
      listed.push_back((*match)[1].str());
    }
  }
  for (const char* function :
       {"abs", "acos",  "arccos", "arcsin", "arctan", "asin",    "atan",  "ceil", "cos", "exp",  "floor", "if",   "ln",
        "log", "log10", "log2",   "max",    "min",    "missing", "round", "sign", "sin", "sqrt", "tan",   "trunc"}) {
    EXPECT_NE(std::find(listed.begin(), listed.end(), function), listed.end()) << function;
  }
}

}  // namespace
}  // namespace orv

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "data/VariableNames.h"
#include "standalone/tables/MemoryTable.h"
#include "support/TestHost.h"

namespace orv {
namespace {

// A host with keys for long names and with formatting marks, as a desktop suite has them.
class NamingHost : public testing::TestHost {
 public:
  using TestHost::TestHost;
  int GetVarNameEx(std::uint16_t group, int index, std::string& name) override {
    EXPECT_EQ(group, 1);
    const auto found = Names.find(index);
    if (found == Names.end()) return 1;
    name = found->second;
    return 0;
  }
  std::string ExpandPossible8CharHash(const std::string& text) override {
    return text == "BLOODPR1" ? "  blood pressure <b>(mm Hg)</b>  " : text;
  }
  std::string StripFormatting(const std::string& text) override {
    EXPECT_EQ(text.find_first_not_of(' '), text.empty() ? std::string::npos : 0U) << "trimmed before, on the left";
    EXPECT_FALSE(!text.empty() && text.back() == ' ') << "trimmed before, on the right";
    std::string plain;
    bool mark = false;
    for (const char character : text) {
      if (character == '<') mark = true;
      if (!mark) plain += character;
      if (character == '>') mark = false;
    }
    return plain;
  }

  std::map<int, std::string> Names;  // by index from 0
};

TEST(VariableName, IsLongTrimmedAndWithoutFormattingMarks) {
  const MemoryTable table;
  NamingHost host(table);
  host.Names = {{0, "age"}, {1, "  karno "}, {2, "BLOODPR1"}, {3, "two words"}, {4, "   "}, {5, ""}};
  struct {
    int Variable;
    const char* Name;
  } const cases[] = {{1, "age"}, {2, "karno"}, {3, "blood pressure (mm Hg)"}, {4, "two words"}, {5, ""}, {6, ""},
                     {7, ""},    {0, ""}};
  for (const auto& c : cases) EXPECT_EQ(VariableName(host, c.Variable), c.Name) << "variable " << c.Variable;
}

}  // namespace
}  // namespace orv

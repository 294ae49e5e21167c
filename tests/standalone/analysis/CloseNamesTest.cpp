#include <gtest/gtest.h>

#include "standalone/analysis/CloseNames.h"

namespace orv {
namespace {

using Names = std::vector<std::string>;

TEST(CloseNames, TellWhatASlipMayHaveMeant) {
  const std::vector<std::string_view> variables = {"id",    "time", "diagtime", "status", "celltype",
                                                   "karno", "age",  "x1",       "x2"};
  struct {
    const char* what;
    const char* name;
    Names close;
  } const cases[] = {
      {"a letter too few", "tme", {"time"}},
      {"a letter too many", "agee", {"age"}},
      {"two letters changed places", "satus", {"status"}},
      {"capitals", "TIME", {"time", "diagtime"}},
      {"an abbreviation", "cell", {"celltype"}},
      {"a short abbreviation", "ka", {"karno"}},
      {"a longer name that holds the variable's", "age_at_entry", {"age"}},
      {"variables with numbers", "x3", {"x1", "x2"}},
      {"nothing near", "haemoglobin", {}},
      {"a name of one letter is near to none", "z", {}},
      {"a number out of range", "#12", {}},
      {"no name", "", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(CloseNames(c.name, variables, 3), c.close) << c.what;
}

TEST(CloseNames, AreAtMostAsManyAsAskedForNearestFirst) {
  const std::vector<std::string_view> variables = {"gene100", "gene12", "gene1", "gene11"};
  EXPECT_EQ(CloseNames("gene11", variables, 2), (Names{"gene11", "gene12"}));
  EXPECT_EQ(CloseNames("gene11", variables, 0), Names{});
  EXPECT_EQ(CloseNames("gene11", {}, 3), Names{});
}

TEST(CloseNames, OfOneLetterDifferInCapitalsAlone) {
  EXPECT_EQ(CloseNames("X", {"x", "y"}, 3), Names{"x"});
}

}  // namespace
}  // namespace orv

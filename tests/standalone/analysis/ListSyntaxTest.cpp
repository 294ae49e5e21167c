#include <gtest/gtest.h>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/ListSyntax.h"

namespace orv {
namespace {

using Items = std::vector<std::string>;

template <typename Call>
std::string MessageOf(const Call& call) {
  try {
    call();
  } catch (const DefinitionError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(SplitList, SeparatesItemsAtCommas) {
  struct {
    const char* text;
    Items items;
  } const cases[] = {
      {"age", {"age"}},
      {"age,sex", {"age", "sex"}},
      {" age , body mass ", {"age", "body mass"}},
      {"\"Bonn, Beuel\",Ulm", {"Bonn, Beuel", "Ulm"}},
      {"Ulm, \"Bonn, Beuel\" ", {"Ulm", "Bonn, Beuel"}},
      {"\"5\"\" pipe\"", {"5\" pipe"}},
      {"5\" pipe,6\" pipe", {"5\" pipe", "6\" pipe"}},
      {"\" a \"", {" a "}},
      {"-0.5,.5,1e-3", {"-0.5", ".5", "1e-3"}},
  };
  for (const auto& c : cases) EXPECT_EQ(SplitList("--covariates", c.text), c.items) << c.text;
}

TEST(SplitList, RefusesEmptyItemsAndMisplacedQuotes) {
  struct {
    const char* text;
    const char* message;
  } const cases[] = {
      {"", "--fix: \"\" has a comma with nothing before or after it."},
      {"1,", "--fix: \"1,\" has a comma with nothing before or after it."},
      {",1", "--fix: \",1\" has a comma with nothing before or after it."},
      {"1, ,2", "--fix: \"1, ,2\" has a comma with nothing before or after it."},
      {"\"\",1", "--fix: \"\"\",1\" has a comma with nothing before or after it."},
      {"\"1", "--fix: in \"1, a quote is not closed, or closed before the end of an item."},
      {"\"1\"2,3", "--fix: in \"1\"2,3, a quote is not closed, or closed before the end of an item."},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MessageOf([&] { SplitList("--fix", c.text); }), c.message) << c.text;
  }
}

TEST(ParseCodes, SeparatesFactorAndCodes) {
  struct {
    const char* text;
    const char* factor;
    Items codes;
  } const cases[] = {
      {"arm=1,2", "arm", {"1", "2"}},
      {" body type = a , b ", "body type", {"a", "b"}},
      {"#4=-1", "#4", {"-1"}},
      {"site=\"Bonn, Beuel\",Ulm", "site", {"Bonn, Beuel", "Ulm"}},
      {"\"a=b\"=1,2", "a=b", {"1", "2"}},
      {"arm=a=b,c", "arm", {"a=b", "c"}},
  };
  for (const auto& c : cases) {
    const CodeAssignment assignment = ParseCodes("--codes", c.text);
    EXPECT_EQ(assignment.Factor, c.factor) << c.text;
    EXPECT_EQ(assignment.Codes, c.codes) << c.text;
  }
}

TEST(ParseCodes, RefusesOtherForms) {
  for (const std::string text : {"", "arm", "=1", " = 1", "arm=", "arm= ", "\"arm\"1=2"}) {
    EXPECT_NE(MessageOf([&] { ParseCodes("--codes", text); }), "accepted") << text;
  }
  EXPECT_EQ(MessageOf([] { ParseCodes("--codes", "arm:1"); }),
            "--codes: \"arm:1\" is not of the form FACTOR=CODE,CODE.");
}

TEST(ParseReference, TakesOneCodeWithItsCommas) {
  EXPECT_EQ(ParseReference("--reference", "site=Bonn, Beuel").Codes, Items{"Bonn, Beuel"});
  EXPECT_EQ(ParseReference("--reference", "site=\"Bonn, Beuel\"").Codes, Items{"Bonn, Beuel"});
  EXPECT_EQ(ParseReference("--reference", " site = 2 ").Codes, Items{"2"});
  EXPECT_EQ(MessageOf([] { ParseReference("--reference", "site"); }),
            "--reference: \"site\" is not of the form FACTOR=CODE.");
}

TEST(ListItem, IsReadBackAsOneItem) {
  for (const std::string item : {"Ulm", "Bonn, Beuel", "a \"b\", c", "5\" pipe"}) {
    EXPECT_EQ(SplitList("--codes", ListItem(item)), Items{item}) << ListItem(item);
  }
  EXPECT_EQ(ListItem("Ulm"), "Ulm");
  EXPECT_EQ(ListItem("Bonn, Beuel"), "\"Bonn, Beuel\"");
}

}  // namespace
}  // namespace orv

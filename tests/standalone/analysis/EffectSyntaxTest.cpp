#include <gtest/gtest.h>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/EffectSyntax.h"

namespace orv {
namespace {

using Names = std::vector<std::string>;

TEST(EffectSyntax, ReadsCrossesAndNesting) {
  struct {
    const char* text;
    Names crossed;
    Names nesting;
    const char* name;
  } const cases[] = {
      {"age", {"age"}, {}, "age"},
      {"  age\t", {"age"}, {}, "age"},
      {"age*sex", {"age", "sex"}, {}, "age*sex"},
      {"age * sex * arm", {"age", "sex", "arm"}, {}, "age*sex*arm"},
      {"clinic(region)", {"clinic"}, {"region"}, "clinic(region)"},
      {"clinic ( region * country )", {"clinic"}, {"region", "country"}, "clinic(region*country)"},
      {"age*clinic(region)", {"age", "clinic"}, {"region"}, "age*clinic(region)"},
      {"body mass index", {"body mass index"}, {}, "body mass index"},
      {"ecog.ps*log-dose", {"ecog.ps", "log-dose"}, {}, "ecog.ps*log-dose"},
      {"#3*#4", {"#3", "#4"}, {}, "#3*#4"},
      {"\"a*b\"*c", {"a*b", "c"}, {}, "a*b*c"},
      {"\" a, b \"", {" a, b "}, {}, " a, b "},
      {"\"5\"\" pipe\"", {"5\" pipe"}, {}, "5\" pipe"},
      {"k\xC3\xB6rper*\"gr\xC3\xB6\xC3\x9F"
       "e\"",
       {"k\xC3\xB6rper",
        "gr\xC3\xB6\xC3\x9F"
        "e"},
       {},
       "k\xC3\xB6rper*gr\xC3\xB6\xC3\x9F"
       "e"},
  };
  for (const auto& c : cases) {
    const std::vector<WrittenEffect> effects = ParseEffects(c.text);
    ASSERT_EQ(effects.size(), 1U) << c.text;
    EXPECT_EQ(effects[0].Crossed, c.crossed) << c.text;
    EXPECT_EQ(effects[0].Nesting, c.nesting) << c.text;
    EXPECT_EQ(EffectName(effects[0]), c.name) << c.text;
  }
}

TEST(EffectSyntax, KeepsTheOrderAndTheTextOfEffects) {
  const std::vector<WrittenEffect> effects = ParseEffects(" b ,a*b , c( a )");
  ASSERT_EQ(effects.size(), 3U);
  EXPECT_EQ(effects[0].Text, "b");
  EXPECT_EQ(effects[1].Text, "a*b");
  EXPECT_EQ(effects[2].Text, "c( a )");
}

TEST(EffectSyntax, MistakesAreToldWithTheirPlace) {
  const std::string name = "expected the name of a covariate or factor.";
  struct {
    const char* text;
    std::string message;
  } const cases[] = {
      {"", "--effects: in \"\", at the end: " + name},
      {"  ", "--effects: in \"  \", at the end: " + name},
      {"age,", "--effects: in \"age,\", at the end: " + name},
      {",age", "--effects: in \",age\", at character 1: " + name},
      {"age**sex", "--effects: in \"age**sex\", at character 5: " + name},
      {"k\xC3\xB6rper**sex", "--effects: in \"k\xC3\xB6rper**sex\", at character 8: " + name},
      {"a()", "--effects: in \"a()\", at character 3: " + name},
      {"a(b", "--effects: in \"a(b\", at the end: expected \")\" or \"*\"."},
      {"a(b,c)", "--effects: in \"a(b,c)\", at character 4: expected \")\" or \"*\"."},
      {"a(b(c))", "--effects: in \"a(b(c))\", at character 4: expected \")\" or \"*\"."},
      {"a)", "--effects: in \"a)\", at character 2: expected \"*\", \"(\", \",\" or the end."},
      {"a(b)c", "--effects: in \"a(b)c\", at character 5: expected \",\" or the end."},
      {"a(b)*c",
       "--effects: in \"a(b)*c\", at character 5: a cross goes before the parenthesis: write c*a(b) for a(b)*c."},
      {"a, \"b", "--effects: in \"a, \"b\", at character 4: the quote that opens here is not closed."},
      {"\"a\"b", "--effects: in \"\"a\"b\", at character 4: expected \"*\", \"(\", \",\" or the end."},
  };
  for (const auto& c : cases) {
    try {
      ParseEffects(c.text);
      ADD_FAILURE() << "accepted: " << c.text;
    } catch (const DefinitionError& error) {
      EXPECT_EQ(error.what(), c.message) << c.text;
    }
  }
}

}  // namespace
}  // namespace orv

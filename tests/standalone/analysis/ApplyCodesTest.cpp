// The codes of a definition: of the status, of factors and their references, of strata.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "standalone/analysis/Definitions.h"

namespace orv::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

AnalysisDefinition WithFactors() {
  AnalysisDefinition definition = LeastDefinition();
  definition.Factors = {"arm", "site"};
  return definition;
}

TEST(ApplyStatusCodes, ZeroAndOneNeedNoCodes) {
  const Applied applied(LeastDefinition());
  EXPECT_EQ(applied.Result.Fields.CodeForCompleteResponses, 1.0);
  EXPECT_EQ(applied.Result.Fields.CodeForCensoredResponses, 0.0);
  EXPECT_THAT(applied.Result.Notes, ElementsAre("status: 1 is taken as an event and 0 as censored."));
}

TEST(ApplyStatusCodes, AreTakenAsNumbersOrLabels) {
  struct {
    const char* what;
    const char* csv;
    const char* event;
    const char* censored;
    double complete;
    double incomplete;
  } const cases[] = {
      {"numbers", "time,status\n5,2\n6,1\n", "2", "1", 2.0, 1.0},
      {"zero and one the other way round", "time,status\n5,0\n6,1\n", "0", "1", 0.0, 1.0},
      {"a number that no case has", "time,status\n5,1\n6,1\n", "1", "0", 1.0, 0.0},
      {"texts", "time,status\n5,dead\n6,alive\n", "dead", "alive", 2.0, 1.0},
      {"numbers that are no whole ones", "time,status\n5,0.5\n6,1\n", "0.5", "1.0", 0.5, 1.0},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = LeastDefinition();
    definition.EventCode = c.event;
    definition.CensoredCode = c.censored;
    const Applied applied(definition, c.csv);
    EXPECT_EQ(applied.Result.Fields.CodeForCompleteResponses, c.complete) << c.what;
    EXPECT_EQ(applied.Result.Fields.CodeForCensoredResponses, c.incomplete) << c.what;
    EXPECT_THAT(applied.Result.Notes, IsEmpty()) << c.what;
  }
}

TEST(ApplyStatusCodes, AreNeededForAnyOtherStatus) {
  const std::string needed =
      "--status: \"status\" does not hold exactly the values 0 and 1, so say what its codes mean with --event CODE and "
      "--censored CODE. Its values: ";
  struct {
    const char* csv;
    const char* values;
  } const cases[] = {
      {"time,status\n5,1\n6,2\n", "1, 2."},
      {"time,status\n5,1\n6,1\n", "1."},
      {"time,status\n5,0\n6,0\n", "0."},
      {"time,status\n5,0\n6,1\n7,2\n", "0, 1, 2."},
      {"time,status\n5,dead\n6,alive\n", "alive, dead."},
      {"time,status\n5,0\n6,one\n", "0, one."},
      {"time,status\n5,\n6,\n", "none, all are missing."},
  };
  for (const auto& c : cases) EXPECT_EQ(RefusalOf(LeastDefinition(), c.csv), needed + c.values) << c.csv;
}

TEST(ApplyStatusCodes, TextsThatAreNoneAreRefused) {
  AnalysisDefinition definition = LeastDefinition();
  definition.EventCode = "dead";
  definition.CensoredCode = "0";
  EXPECT_EQ(RefusalOf(definition), "--event: \"status\" has no value \"dead\". Its values: 0, 1.");
}

TEST(ApplyFactorCodes, AreThoseOfTheTableWithTheLargestAsReference) {
  const Applied applied(WithFactors());
  const CoxSettings& s = applied.Settings();
  EXPECT_THAT(s.FactorCodes, ElementsAre(1, 2, 3, 1, 2, 3));
  EXPECT_THAT(s.FactorCodeCounts, ElementsAre(3, 3));
  EXPECT_THAT(s.ReferenceCodes, ElementsAre(3, 3));
  EXPECT_THAT(s.ReferenceCodeIndex, ElementsAre(3, 3));
}

TEST(ApplyFactorCodes, AreSelectedInTheOrderOfTheirNaming) {
  AnalysisDefinition definition = WithFactors();
  definition.FactorCodes = {"site=3,1", "#4=placebo,drug"};
  const Applied applied(definition);
  const CoxSettings& s = applied.Settings();
  EXPECT_THAT(s.FactorCodes, ElementsAre(3, 2, 3, 1));
  EXPECT_THAT(s.FactorCodeCounts, ElementsAre(2, 2));
  EXPECT_THAT(s.ReferenceCodes, ElementsAre(3, 3));
  EXPECT_THAT(s.ReferenceCodeIndex, ElementsAre(1, 1));
}

TEST(ApplyFactorCodes, TheReferenceIsACodeOrALabel) {
  AnalysisDefinition definition = WithFactors();
  definition.FactorCodes = {"site=3,1"};
  definition.ReferenceCodes = {"site=1", "arm=drug"};
  const Applied applied(definition);
  EXPECT_THAT(applied.Settings().ReferenceCodes, ElementsAre(2, 1));
  EXPECT_THAT(applied.Settings().ReferenceCodeIndex, ElementsAre(2, 2));
}

TEST(ApplyFactorCodes, AreRefusedWhenTheTableOrTheDefinitionLacksThem) {
  struct {
    const char* what;
    std::function<void(AnalysisDefinition&)> change;
    const char* message;
  } const cases[] = {
      {"an unknown label", [](auto& d) { d.FactorCodes = {"arm=drug,sham"}; },
       "--codes: \"arm\" has no value \"sham\". Its values: control, drug, placebo."},
      {"an unknown number", [](auto& d) { d.FactorCodes = {"site=1,4"}; },
       "--codes: \"site\" has no value \"4\". Its values: 1, 2, 3."},
      {"the number behind a text", [](auto& d) { d.FactorCodes = {"arm=1,2"}; },
       "--codes: \"arm\" has no value \"1\". Its values: control, drug, placebo."},
      {"a code twice", [](auto& d) { d.FactorCodes = {"site=1,2,1"}; },
       "--codes: the code \"1\" of \"site\" is named twice."},
      {"a code twice in other words", [](auto& d) { d.FactorCodes = {"site=1,1.0"}; },
       "--codes: the code \"1.0\" of \"site\" is named twice."},
      {"a factor twice",
       [](auto& d) {
         d.FactorCodes = {"site=1,2", "#5=3"};
       },
       "--codes: \"site\" is given twice. Name all its codes at once."},
      {"codes of no factor", [](auto& d) { d.FactorCodes = {"age=48,51"}; },
       "--codes: \"age\" is not among --factors."},
      {"codes of no variable", [](auto& d) { d.FactorCodes = {"sight=1,2"}; },
       "--codes: no variable \"sight\" in trial.csv. It has time, status, age, arm, site."},
      {"a reference that is not selected",
       [](auto& d) {
         d.FactorCodes = {"site=1,2"};
         d.ReferenceCodes = {"site=3"};
       },
       "--reference: \"3\" is not a selected code of \"site\". Selected: 1, 2."},
      {"a reference that is no code", [](auto& d) { d.ReferenceCodes = {"arm=sham"}; },
       "--reference: \"sham\" is not a selected code of \"arm\". Selected: control, drug, placebo."},
      {"two references",
       [](auto& d) {
         d.ReferenceCodes = {"arm=drug", "arm=control"};
       },
       "--reference: \"arm\" is given twice. A factor has one reference code."},
      {"the reference of no factor", [](auto& d) { d.ReferenceCodes = {"age=48"}; },
       "--reference: \"age\" is not among --factors."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = WithFactors();
    c.change(definition);
    EXPECT_EQ(RefusalOf(definition), c.message) << c.what;
  }
}

TEST(ApplyFactorCodes, FewerThanTwoAreNotedAndRefusedByTheModule) {
  struct {
    const char* what;
    const char* csv;
    const char* note;
  } const cases[] = {
      {"one number", "time,status,arm\n5,1,7\n6,0,7\n", "--factors: \"arm\" has a single code, 7."},
      {"one text", "time,status,arm\n5,1,drug\n6,0,\n", "--factors: \"arm\" has a single code, drug."},
      {"none", "time,status,arm\n5,1,\n6,0,\n", "--factors: \"arm\" has no codes, all its values are missing."},
  };
  for (const auto& c : cases) {
    AnalysisDefinition definition = LeastDefinition();
    definition.Factors = {"arm"};
    Applied applied(definition, c.csv);
    EXPECT_THAT(applied.Result.Notes, Contains(c.note)) << c.what;
    EXPECT_EQ(applied.Run(), 1) << c.what;
    EXPECT_THAT(
        applied.Host.Messages(),
        ElementsAre("Fewer than 2 valid codes were found for a grouping factor.  Please carefully check the codes "
                    "and selection conditions."))
        << c.what;
  }
}

TEST(ApplyStrataCodes, AreThoseOfTheTableOrThoseSelected) {
  AnalysisDefinition definition = LeastDefinition();
  definition.Strata = "site";
  const Applied all(definition);
  EXPECT_THAT(all.Settings().StrataCodes, ElementsAre(1, 2, 3));
  EXPECT_THAT(all.Settings().StrataCodeCount, ElementsAre(3));
  definition.StrataCodes = {"3", "1"};
  const Applied some(definition);
  EXPECT_THAT(some.Settings().StrataCodes, ElementsAre(3, 1));
  EXPECT_THAT(some.Settings().StrataCodeCount, ElementsAre(2));
  definition.StrataCodes = {"3", "4"};
  EXPECT_EQ(RefusalOf(definition), "--strata-codes: \"site\" has no value \"4\". Its values: 1, 2, 3.");
  definition.Strata = "arm";
  definition.StrataCodes = {"drug", "control"};
  const Applied texts(definition);
  EXPECT_THAT(texts.Settings().StrataCodes, ElementsAre(2, 1));
}

}  // namespace
}  // namespace orv::testing

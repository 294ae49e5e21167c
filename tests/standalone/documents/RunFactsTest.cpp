#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/RunFacts.h"

namespace orv {
namespace {

// One fact a line; "#" before a number that is one.
std::string Listed(const RunReport& report) {
  std::string text;
  for (const RunFact& fact : FactsOfRun(report)) {
    text += fact.Name + ": " + (fact.Number ? "#" : "") + fact.Text + "\n";
    if (fact.Number) {
      EXPECT_EQ(std::to_string(*fact.Number), fact.Text);
    }
  }
  return text;
}

TEST(FactsOfRun, ListsWhatIsKnownInItsOrder) {
  EXPECT_EQ(Listed(FullReport()), R"(Program: orvcox 1.2.3
Cases read: #228
Cases in the analysis: #225
Complete: #163
Censored: #62
Left out: missing values: #2
Left out: status neither code: #1
Missing in ph.ecog: #1
Missing in ph_<karno>: #1
Columns left out of the fit: sex_2, a*b
Converged: no
Iterations: #50
Message: First line.
Second <line>.
)");
}

TEST(FactsOfRun, LeavesOutWhatARefusedRunDoesNotKnow) {
  RunReport report;
  report.Program = "orvcox";
  report.Version = "1.2.3";
  report.Messages = {{0, "a"}, {0, "b"}};
  EXPECT_EQ(Listed(report), "Program: orvcox 1.2.3\nMessage: a\nMessage: b\n");
  EXPECT_EQ(Listed({}), "");
}

TEST(FactsOfRun, CountsNoCasesAsZeroAndListsEveryReasonThatOccurred) {
  RunReport report;
  report.Cases.emplace();
  report.Cases->Excluded = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(Listed(report), R"(Cases read: #0
Cases in the analysis: #0
Complete: #0
Censored: #0
Left out: not selected: #1
Left out: missing values: #2
Left out: weight missing or not above 0: #3
Left out: time out of range: #4
Left out: entry time: #5
Left out: stratum not selected: #6
Left out: status neither code: #7
Left out: factor code not selected: #8
Left out: time-dependent covariate missing: #9
)");
}

}  // namespace
}  // namespace orv

#include "standalone/documents/RunFacts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <iterator>
#include <string_view>

namespace orv {
namespace {

// In the order of ExclusionReason. The texts follow "Left out: ".
constexpr std::string_view ReasonTexts[] = {"not selected",
                                            "missing values",
                                            "weight missing or not above 0",
                                            "time out of range",
                                            "entry time",
                                            "stratum not selected",
                                            "status neither code",
                                            "factor code not selected",
                                            "time-dependent covariate missing"};
static_assert(std::size(ReasonTexts) == ExclusionReasonCount);

class FactList {
 public:
  void AddText(std::string name, std::string text) { m_facts.push_back({std::move(name), std::move(text), {}}); }
  void AddNumber(std::string name, int number) { m_facts.push_back({std::move(name), std::to_string(number), number}); }
  void AddCount(std::string name, int number) {
    if (number != 0) AddNumber(std::move(name), number);
  }
  std::vector<RunFact> Take() { return std::move(m_facts); }

 private:
  std::vector<RunFact> m_facts;
};

void AddCases(FactList& facts, const CaseReport& cases) {
  facts.AddNumber("Cases read", cases.Read);
  facts.AddNumber("Cases in the analysis", cases.Valid);
  facts.AddNumber("Complete", cases.Complete);
  facts.AddNumber("Censored", cases.Censored);
  for (std::size_t reason = 0; reason < ExclusionReasonCount; ++reason) {
    facts.AddCount(fmt::format("Left out: {}", ReasonTexts[reason]), cases.Excluded[reason]);
  }
  for (const auto& [variable, count] : cases.MissingByVariable) {
    facts.AddCount(fmt::format("Missing in {}", variable), count);
  }
}

}  // namespace

std::vector<RunFact> FactsOfRun(const RunReport& report) {
  FactList facts;
  if (!report.Program.empty()) facts.AddText("Program", fmt::format("{} {}", report.Program, report.Version));
  if (report.Cases) AddCases(facts, *report.Cases);
  if (!report.LeftOutColumns.empty()) {
    facts.AddText("Columns left out of the fit", fmt::format("{}", fmt::join(report.LeftOutColumns, ", ")));
  }
  if (report.Fit) {
    facts.AddText("Converged", report.Fit->Converged ? "yes" : "no");
    facts.AddNumber("Iterations", report.Fit->Iterations);
  }
  for (const ReportedMessage& message : report.Messages) facts.AddText("Message", message.Text);
  return facts.Take();
}

}  // namespace orv

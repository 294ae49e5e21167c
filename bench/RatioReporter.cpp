#include "RatioReporter.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <ostream>
#include <utility>

#include "Cases.h"

namespace orv::bench {

namespace {

constexpr int kNameWidth = 27;

// Empty when there are only aggregates, which come in a call of their own.
std::optional<CaseResult> Summarize(const std::vector<benchmark::BenchmarkReporter::Run>& runs) {
  CaseResult result;
  std::vector<double> seconds;
  for (const auto& run : runs) {
    if (run.run_type != benchmark::BenchmarkReporter::Run::RT_Iteration) continue;
    seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
    // The figures are those of the run whose time is told.
    if (seconds.back() > *std::min_element(seconds.begin(), seconds.end())) continue;
    const std::string& name = run.run_name.function_name;
    result.Name = name.substr(0, name.rfind('/'));
    result.Answer = run.report_label;
    for (const auto& [figure, counter] : run.counters) result.Figures[figure] = counter.value;
  }
  if (seconds.empty()) return std::nullopt;
  std::sort(seconds.begin(), seconds.end());
  result.Seconds = seconds.front();
  result.Spread = seconds[seconds.size() / 2] / result.Seconds - 1.0;
  return result;
}

}  // namespace

bool RatioReporter::ReportContext(const Context&) {
  return true;
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (!run.error_occurred) continue;
    m_hasFailed = true;
    GetOutputStream() << run.run_name.function_name << " FAILED: " << run.error_message << std::endl;
    return;
  }
  const std::optional<CaseResult> summary = Summarize(runs);
  if (!summary) return;
  const CaseResult& result = *summary;
  const Group& group = GroupOf(result.Name);
  std::ostream& out = GetOutputStream();
  if (m_group != &group) {
    m_group = &group;
    out << fmt::format("\n{:<{}}", "case", kNameWidth);
    for (const TableColumn& column : group.Columns) out << fmt::format("{:>{}}", column.Title, column.Width);
    out << '\n';
  }
  out << fmt::format("{:<{}}", result.Name, kNameWidth);
  for (const TableColumn& column : group.Columns) {
    out << fmt::format("{:>{}}", column.Cell(result, m_speed), column.Width);
  }
  out << std::endl;
  m_results.push_back(result);
}

std::string RatioReporter::LinesOf(const Growth& growth) const {
  // The first size of each case and number of columns, the smallest, is the baseline of the larger ones.
  std::map<std::pair<std::string, double>, const CaseResult*> smallest;
  std::string lines;
  for (const CaseResult& result : m_results) {
    if (GroupOf(result.Name).Cost != &growth) continue;
    const double cost = result.Seconds * 1e9 / result.Figure(growth.UnitFigure);
    const auto [found, isFirst] = smallest.try_emplace({result.Name, result.Figure(Figures::Columns)}, &result);
    if (isFirst) continue;
    const CaseResult& base = *found->second;
    const double baseCost = base.Seconds * 1e9 / base.Figure(growth.UnitFigure);
    lines += fmt::format("{:<{}}{:>4.0f}{:>9.0f}{:>10.1f}{:>9.0f}{:>10.1f}{:>8.2f}\n", result.Name, kNameWidth,
                         result.Figure(Figures::Columns), result.Figure(growth.SizeFigure), cost,
                         base.Figure(growth.SizeFigure), baseCost, cost / baseCost);
  }
  return lines;
}

void RatioReporter::Finalize() {
  for (const Growth* growth : Growths()) {
    const std::string lines = LinesOf(*growth);
    if (lines.empty()) continue;
    const std::string unit = fmt::format("ns/{}", growth->Unit);
    GetOutputStream() << fmt::format("\n{}\n\n{:<{}}{:>4}{:>9}{:>10}{:>9}{:>10}{:>8}\n", growth->Heading, "case",
                                     kNameWidth, "p,k", growth->Size, unit, fmt::format("base {}", growth->Size), unit,
                                     "ratio")
                      << lines << std::flush;
  }
}

}  // namespace orv::bench

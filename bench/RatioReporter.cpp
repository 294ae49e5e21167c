#include "RatioReporter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <ostream>
#include <string_view>

#include "Cases.h"

namespace orv::bench {

namespace {

constexpr int kNameWidth = 24;

struct TableColumn {
  const char* Title;
  int Width;
  std::function<std::string(const CaseResult&, const MachineSpeed&)> Cell;
};

std::string Fixed(double value, int decimals) {
  return fmt::format("{:.{}f}", value, decimals);
}

// Three digits that count, as far as decimals go.
std::string Milliseconds(const CaseResult& result) {
  const double ms = result.Seconds * 1e3;
  return Fixed(ms, ms < 9.995 ? 2 : ms < 99.95 ? 1 : 0);
}

double MultiplyAddRate(const CaseResult& result) {
  return result.Figure(Figures::MultiplyAdds) / result.Seconds;
}

const TableColumn kCases{"n", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Cases), 0); }};
const TableColumn kTime{"ms", 8, [](const auto& r, const auto&) { return Milliseconds(r); }};
const TableColumn kPerCase{
    "ns/case", 9, [](const auto& r, const auto&) { return Fixed(r.Seconds * 1e9 / r.Figure(Figures::Cases), 1); }};
const TableColumn kRate{"Gmadd/s", 9, [](const auto& r, const auto&) { return Fixed(MultiplyAddRate(r) * 1e-9, 2); }};
const TableColumn kOfPeak{"of peak", 9,
                          [](const auto& r, const auto& m) { return Fixed(MultiplyAddRate(r) / m.MultiplyAdds, 3); }};
const TableColumn kOfPortable{"of portable", 13, [](const auto& r, const auto& m) {
                                return Fixed(MultiplyAddRate(r) / m.PortableMultiplyAdds, 3);
                              }};
const TableColumn kSpread{
    "spread", 8, [](const auto& r, const auto&) { return fmt::format("{} %", std::lround(r.Spread * 100.0)); }};
const TableColumn kAnswer{"answer", 13, [](const auto& r, const auto&) { return r.Answer; }};

TableColumn ColumnsTitled(const char* title) {
  return {title, 4, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Columns), 0); }};
}

struct Group {
  std::string_view Name;
  std::vector<TableColumn> Columns;
};

const std::vector<Group>& Groups() {
  static const std::vector<Group> kGroups = {
      {"read",
       {kCases,
        ColumnsTitled("k"),
        kTime,
        kPerCase,
        {"MB/s", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Bytes) / r.Seconds * 1e-6, 0); }},
        {"scan ms", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::ScanSeconds) * 1e3, 2); }},
        {"of scan", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::ScanSeconds) / r.Seconds, 3); }},
        kSpread,
        kAnswer}},
      {"cases", {kCases, ColumnsTitled("p"), kTime, kPerCase, kSpread, kAnswer}},
      {"pass",
       {kCases,
        ColumnsTitled("p"),
        kTime,
        kPerCase,
        kRate,
        kOfPeak,
        kOfPortable,
        {"GB/s", 7, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Bytes) / r.Seconds * 1e-9, 2); }},
        {"of triad", 10,
         [](const auto& r, const auto& m) { return Fixed(r.Figure(Figures::Bytes) / r.Seconds / m.TriadBytes, 3); }},
        kSpread,
        kAnswer}},
      {"fit",
       {kCases,
        ColumnsTitled("p"),
        kTime,
        kPerCase,
        {"passes", 8, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Passes), 0); }},
        kRate,
        kOfPeak,
        kOfPortable,
        kSpread,
        kAnswer}},
  };
  return kGroups;
}

std::string GroupName(const std::string& name) {
  return name.substr(0, name.find('/'));
}

const Group& GroupOf(const std::string& name) {
  const std::string group = GroupName(name);
  const auto found = std::find_if(Groups().begin(), Groups().end(), [&](const Group& g) { return g.Name == group; });
  return found != Groups().end() ? *found : Groups().back();
}

// The value that a share of the sorted values lie below, between neighbours if need be.
double Quantile(const std::vector<double>& sorted, double share) {
  const double place = share * static_cast<double>(sorted.size() - 1);
  const auto low = static_cast<std::size_t>(place);
  const std::size_t high = std::min(low + 1, sorted.size() - 1);
  return sorted[low] + (sorted[high] - sorted[low]) * (place - static_cast<double>(low));
}

// Empty when there are only aggregates, which come in a call of their own.
std::optional<CaseResult> Summarize(const std::vector<benchmark::BenchmarkReporter::Run>& runs) {
  CaseResult result;
  std::vector<double> seconds;
  for (const auto& run : runs) {
    if (run.run_type != benchmark::BenchmarkReporter::Run::RT_Iteration) continue;
    seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
    const std::string& name = run.run_name.function_name;
    result.Name = name.substr(0, name.rfind('/'));
    result.Answer = run.report_label;
    for (const auto& [figure, counter] : run.counters) result.Figures[figure] = counter.value;
  }
  if (seconds.empty()) return std::nullopt;
  std::sort(seconds.begin(), seconds.end());
  result.Seconds = Quantile(seconds, 0.5);
  result.Spread = (Quantile(seconds, 0.75) - Quantile(seconds, 0.25)) / result.Seconds;
  return result;
}

}  // namespace

double CaseResult::Figure(const char* name) const {
  const auto found = Figures.find(name);
  return found != Figures.end() ? found->second : 0.0;
}

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
  if (m_group != GroupName(result.Name)) {
    m_group = GroupName(result.Name);
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

void RatioReporter::Finalize() {
  // The smallest n of each case and number of columns is the baseline of the larger ones.
  std::map<std::pair<std::string, double>, const CaseResult*> smallest;
  std::string lines;
  for (const CaseResult& result : m_results) {
    const double perCase = result.Seconds / result.Figure(Figures::Cases);
    const auto [found, isFirst] = smallest.try_emplace({result.Name, result.Figure(Figures::Columns)}, &result);
    if (isFirst) continue;
    const CaseResult& base = *found->second;
    const double basePerCase = base.Seconds / base.Figure(Figures::Cases);
    lines += fmt::format("{:<{}}{:>4.0f}{:>9.0f}{:>10.1f}{:>9.0f}{:>10.1f}{:>8.2f}\n", result.Name, kNameWidth,
                         result.Figure(Figures::Columns), result.Figure(Figures::Cases), perCase * 1e9,
                         base.Figure(Figures::Cases), basePerCase * 1e9, perCase / basePerCase);
  }
  if (lines.empty()) return;
  GetOutputStream() << "\nCost of one case against n: a ratio of 1 is a cost that grows as n does.\n\n"
                    << fmt::format("{:<{}}{:>4}{:>9}{:>10}{:>9}{:>10}{:>8}\n", "case", kNameWidth, "p,k", "n",
                                   "ns/case", "base n", "ns/case", "ratio")
                    << lines << std::flush;
}

}  // namespace orv::bench

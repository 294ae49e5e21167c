#include "ReportGroups.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "Cases.h"

namespace orv::bench {

namespace {

constexpr Growth kCostOfCase = {"Cost of one case against n: a ratio of 1 is a cost that grows as n does.", "case",
                                Figures::Cases, "n", Figures::Cases};
constexpr Growth kCostOfEvent = {
    "Cost of one event against d, the events at one time: a ratio of d over its base is a cost that grows as d does.",
    "event", Figures::Events, "d", Figures::TiedEvents};
constexpr Growth kCostOfPair = {
    "Cost of one pair (event time, row at risk) against n: a ratio of 1 is a cost that grows as the square of n does.",
    "pair", Figures::Pairs, "n", Figures::Cases};

std::string Fixed(double value, int decimals) {
  return fmt::format("{:.{}f}", value, decimals);
}

double MultiplyAddRate(const CaseResult& result) {
  return result.Figure(Figures::MultiplyAdds) / result.Seconds;
}

const TableColumn kCases{"n", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Cases), 0); }};
const TableColumn kTime{"ms", 8, [](const auto& r, const auto&) { return ThreeDigits(r.Seconds * 1e3); }};
const TableColumn kPerCase{
    "ns/case", 9, [](const auto& r, const auto&) { return Fixed(r.Seconds * 1e9 / r.Figure(Figures::Cases), 1); }};
const TableColumn kRate{"Gmadd/s", 9, [](const auto& r, const auto&) { return Fixed(MultiplyAddRate(r) * 1e-9, 2); }};
const TableColumn kOfPeak{"of peak", 9, [](const auto& r, const auto& m) {
                            const double peak = r.Figure(Figures::PeakRate);
                            return Fixed(MultiplyAddRate(r) / (peak > 0.0 ? peak : m.MultiplyAdds), 3);
                          }};
const TableColumn kOfPortable{"of portable", 13, [](const auto& r, const auto& m) {
                                return Fixed(MultiplyAddRate(r) / m.PortableMultiplyAdds, 3);
                              }};
const TableColumn kRowBytes{
    "GB/s", 7, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Bytes) / r.Seconds * 1e-9, 2); }};
const TableColumn kOfTriad{"of triad", 10, [](const auto& r, const auto& m) {
                             return Fixed(r.Figure(Figures::Bytes) / r.Seconds / m.TriadBytes, 3);
                           }};
const TableColumn kTied{"d", 4, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::TiedEvents), 0); }};
// There may be more subsets than a number without an exponent tells.
const TableColumn kSubsets{"subsets", 10, [](const auto& r, const auto&) {
                             const double subsets = r.Figure(Figures::Subsets);
                             return subsets < 1e7 ? Fixed(subsets, 0) : fmt::format("{:.1e}", subsets);
                           }};
const TableColumn kSpread{
    "spread", 8, [](const auto& r, const auto&) { return fmt::format("{} %", std::lround(r.Spread * 100.0)); }};
const TableColumn kAnswer{"answer", 13, [](const auto& r, const auto&) { return r.Answer; }};

TableColumn ColumnsTitled(const char* title) {
  return {title, 4, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Columns), 0); }};
}

std::vector<TableColumn> ColumnsOfPass() {
  const TableColumn timesPlain{
      "x plain", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::PlainSeconds) / r.Seconds, 1); }};
  return {kCases,     ColumnsTitled("p"), kTime,    kPerCase, kRate,  kOfPeak,
          timesPlain, kRowBytes,          kOfTriad, kSpread,  kAnswer};
}

// A group whose name begins with that of another stands before it.
std::vector<Group> MakeGroups() {
  return {
      {"read",
       {kCases,
        ColumnsTitled("k"),
        kTime,
        kPerCase,
        {"MB", 8, [](const auto& r, const auto&) { return ThreeDigits(r.Figure(Figures::Bytes) * 1e-6); }},
        {"MB/s", 7, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Bytes) / r.Seconds * 1e-6, 0); }},
        kOfTriad,
        {"memory", 8,
         [](const auto& r, const auto&) {
           const double values = r.Figure(Figures::Cases) * r.Figure(Figures::Columns);
           return Fixed(r.Figure(Figures::PeakBytes) / (sizeof(double) * values), 2);
         }},
        {"scan ms", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::ScanSeconds) * 1e3, 2); }},
        {"of scan", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::ScanSeconds) / r.Seconds, 3); }},
        kSpread,
        kAnswer},
       &kCostOfCase},
      {"cases", {kCases, ColumnsTitled("p"), kTime, kPerCase, kSpread, kAnswer}, &kCostOfCase},
      {"pass", ColumnsOfPass(), &kCostOfCase},
      {"interval/making", {kCases, ColumnsTitled("p"), kTime, kPerCase, kSpread, kAnswer}, &kCostOfCase},
      {"interval", ColumnsOfPass(), &kCostOfCase},
      {"discrete/subsets",
       {{"members", 9, kCases.Cell},
        ColumnsTitled("p"),
        kTied,
        kSubsets,
        {"us", 9, [](const auto& r, const auto&) { return ThreeDigits(r.Seconds * 1e6); }},
        {"ns/subset", 11,
         [](const auto& r, const auto&) { return Fixed(r.Seconds * 1e9 / r.Figure(Figures::Subsets), 1); }},
        {"recursion us", 14,
         [](const auto& r, const auto&) { return ThreeDigits(r.Figure(Figures::RecursionSeconds) * 1e6); }},
        {"of recursion", 14,
         [](const auto& r, const auto&) { return ThreeDigits(r.Seconds / r.Figure(Figures::RecursionSeconds)); }},
        {"taken", 13,
         [](const auto& r, const auto&) {
           return std::string(r.Figure(Figures::TakesEnumeration) > 0.0 ? "enumeration" : "recursion");
         }},
        kSpread,
        kAnswer},
       nullptr},
      {"discrete",
       {kCases,
        ColumnsTitled("p"),
        kTied,
        kSubsets,
        kTime,
        {"us/event", 10,
         [](const auto& r, const auto&) { return Fixed(r.Seconds * 1e6 / r.Figure(Figures::Events), 2); }},
        kSpread,
        kAnswer},
       &kCostOfEvent},
      {"timedependent",
       {kCases,
        ColumnsTitled("p"),
        {"pairs", 10, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Pairs), 0); }},
        kTime,
        {"ns/pair", 9, [](const auto& r, const auto&) { return Fixed(r.Seconds * 1e9 / r.Figure(Figures::Pairs), 1); }},
        kSpread,
        kAnswer},
       &kCostOfPair},
      {"select/forward",
       {kCases,
        ColumnsTitled("p"),
        {"steps", 7, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Steps), 0); }},
        kTime,
        {"fits ms", 9, [](const auto& r, const auto&) { return ThreeDigits(r.Figure(Figures::FitSeconds) * 1e3); }},
        {"of all", 8, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::FitSeconds) / r.Seconds, 3); }},
        kSpread,
        kAnswer},
       nullptr},
      {"select/best",
       {kCases,
        ColumnsTitled("p"),
        kSubsets,
        {"scored", 9, [](const auto& r, const auto&) { return Fixed(r.Figure(Figures::Scored), 0); }},
        kTime,
        {"exhaustive ms", 15,
         [](const auto& r, const auto&) {
           const double seconds = r.Figure(Figures::ExhaustiveSeconds);
           return seconds > 0.0 ? ThreeDigits(seconds * 1e3) : std::string("-");
         }},
        kSpread,
        kAnswer},
       nullptr},
      {"derived", {kCases, ColumnsTitled("p"), kTime, kPerCase, kSpread, kAnswer}, &kCostOfCase},
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
        kAnswer},
       &kCostOfCase},
  };
}

}  // namespace

const std::vector<const Growth*>& Growths() {
  static const std::vector<const Growth*> kGrowths = {&kCostOfCase, &kCostOfEvent, &kCostOfPair};
  return kGrowths;
}

const Group& GroupOf(std::string_view name) {
  static const std::vector<Group> kGroups = MakeGroups();
  const auto found =
      std::find_if(kGroups.begin(), kGroups.end(), [&](const Group& group) { return name.starts_with(group.Name); });
  return found != kGroups.end() ? *found : kGroups.back();
}

std::string ThreeDigits(double value) {
  return Fixed(value, value < 9.995 ? 2 : value < 99.95 ? 1 : 0);
}

}  // namespace orv::bench

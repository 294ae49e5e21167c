// RunReport: what is told about a run besides its documents.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orv {

// Why a case took no part, in the order in which reports list the reasons.
enum class ExclusionReason { Selection, Missing, Weight, Time, Entry, Stratum, Status, Factor, Expression };
inline constexpr std::size_t ExclusionReasonCount = 9;

struct CaseReport {
  int Read = 0;      // cases of the table
  int Valid = 0;     // cases that took part
  int Complete = 0;  // of those, with an event
  int Censored = 0;
  std::array<int, ExclusionReasonCount> Excluded{};            // by the first reason that applied
  std::vector<std::pair<std::string, int>> MissingByVariable;  // name and missing cases, in the table's order

  int& ExcludedFor(ExclusionReason reason) { return Excluded[static_cast<std::size_t>(reason)]; }
};

// How the last fit of the run ended.
struct FitReport {
  bool Converged = false;
  int Status = 0;
  int Iterations = 0;
};

struct ReportedMessage {
  int Id = 0;  // number in the module's string table, 0 when the message is not from there
  std::string Text;
};

struct RunReport {
  std::string Program;
  std::string Version;
  std::optional<CaseReport> Cases;  // none when the run ended before the cases were read
  std::vector<std::string> LeftOutColumns;
  std::optional<FitReport> Fit;  // none when the run ended before a fit
  std::vector<ReportedMessage> Messages;
};

}  // namespace orv

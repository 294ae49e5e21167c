#include "apps/orvcox/FitCommand.h"

#include <fmt/format.h>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <utility>

#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/ReadWithProgress.h"
#include "apps/orvcox/RunReporting.h"
#include "apps/orvcox/Terminal.h"
#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "standalone/analysis/ApplyDefinition.h"
#include "standalone/documents/DocumentFormats.h"
#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/host/Interrupt.h"
#include "standalone/host/StandaloneHost.h"

namespace orv {

namespace {

struct OutputTarget {
  std::string File;
  const DocumentFormat* Format = nullptr;
};

std::string KnownEndings() {
  std::string text;
  for (const DocumentFormat& format : DocumentFormats()) {
    if (!text.empty()) text += " or ";
    text += format.FileEnding;
  }
  return text;
}

std::string KnownFormats() {
  std::string text;
  for (const DocumentFormat& format : DocumentFormats()) {
    if (!text.empty()) text += " or ";
    text += format.Name;
  }
  return text;
}

// Forms are looked up before anything is read, so that a misspelt ending does not cost a run.
std::vector<OutputTarget> FindTargets(const FitOptions& options) {
  std::vector<OutputTarget> targets;
  for (const std::string& file : options.Outputs) {
    const DocumentFormat* format = FindFormatByFileName(file);
    if (format == nullptr) {
      throw DefinitionError(fmt::format("--output {}: the ending decides the form: use {}.", file, KnownEndings()));
    }
    targets.push_back({file, format});
  }
  return targets;
}

const DocumentFormat& FindStandardFormat(const FitOptions& options) {
  const DocumentFormat* format = FindFormatByName(options.Format);
  if (format == nullptr) throw DefinitionError(fmt::format("--format {}: use {}.", options.Format, KnownFormats()));
  return *format;
}

void CreateResults(CCoxPH& analysis, StandaloneHost& host, const FitOptions& options) {
  const bool hasCoefficients = analysis.m_pCoxData->CoefficientCount > 0;
  const std::map<std::string, std::function<void()>> creators = {
      {"summary", [&] { analysis.CreateSummarySpreadsheet(); }},
      {"estimates", [&] { analysis.CreateParameterEstimateSpreadsheet(options.Confidence); }},
      {"history", [&] { analysis.CreateIterationHistorySpreadsheet(); }},
      {"design", [&] { analysis.CreateDesignTermsSpreadsheet(); }},
      {"covariance", [&] { analysis.CreateCovarianceSpreadsheet(); }},
      {"correlation", [&] { analysis.CreateCorrelationSpreadsheet(); }},
  };
  for (const std::string& name : ChosenResults(options)) {
    // Without coefficients there is nothing to list but the likelihood.
    if (!hasCoefficients && name != "summary") continue;
    host.SetResultName(name);
    creators.at(name)();
  }
}

class FitRun {
 public:
  FitRun(const FitOptions& options, std::ostream& out, std::ostream& err)
      : m_options(options),
        m_out(out),
        m_err(err),
        m_standardFormat(FindStandardFormat(options)),
        m_targets(FindTargets(options)) {
    ChosenResults(options);
    const Terminal terminal = DescribeTerminal(err);
    m_progress = terminal.IsTerminal && !options.Quiet ? &err : nullptr;
  }

  int Run() {
    const MemoryTable table = ReadWithProgress(m_options.Table, m_progress);
    StandaloneHost host(table, m_progress);
    host.SetMessageSink([this](const std::string& text) { m_err << "orvcox: " << text << '\n'; });
    CCoxPH analysis(nullptr);
    analysis.AttachHost(host);
    analysis.Init();

    AppliedDefinition applied = ApplyDefinition(m_options.Definition, host, analysis);
    for (const std::string& note : applied.Notes) Note(note);
    const bool failed = applied.Refused || analysis.RunFromStartup(applied.Fields, nullptr) != 0;
    if (WasInterrupted()) return Cancelled();
    for (const std::string& note : NotesOnRun(analysis, host)) Note(note);
    if (failed) {
      if (m_standardFormat.Name == "json") Write(analysis, host);
      return ExitCodes::AnalysisFailed;
    }
    if (analysis.m_pCoxFit->m_FitStatus == FitStatuses::OutOfMemory) {
      m_err << "orvcox: not enough memory for the fit.\n";
      return ExitCodes::AnalysisFailed;
    }
    CreateResults(analysis, host, m_options);
    if (WasInterrupted()) return Cancelled();
    Write(analysis, host);
    return ExitCodes::Done;
  }

 private:
  void Note(const std::string& text) {
    if (!m_options.Quiet) m_err << "note: " << text << '\n';
  }

  int Cancelled() {
    m_err << "orvcox: cancelled.\n";
    return ExitCodes::Cancelled;
  }

  void Write(const CCoxPH& analysis, const StandaloneHost& host) {
    const RunReport report = ReportRun(analysis, host, ORV_VERSION);
    for (const OutputTarget& target : m_targets) {
      WriteFileAtomically(target.File, target.Format->Write(report, host.Documents(), {}));
    }
    if (!m_targets.empty()) return;
    const Terminal terminal = DescribeTerminal(m_out);
    m_out << m_standardFormat.Write(report, host.Documents(), {terminal.Width, terminal.Bold}) << std::flush;
  }

  const FitOptions& m_options;
  std::ostream& m_out;
  std::ostream& m_err;
  const DocumentFormat& m_standardFormat;
  std::vector<OutputTarget> m_targets;
  std::ostream* m_progress = nullptr;
};

}  // namespace

int RunFit(const FitOptions& options, std::ostream& out, std::ostream& err) {
  return FitRun(options, out, err).Run();
}

}  // namespace orv

#include "apps/orvcox/FitCommand.h"

#include <functional>
#include <map>
#include <ostream>

#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/ReadWithProgress.h"
#include "apps/orvcox/RunReporting.h"
#include "apps/orvcox/SaveJob.h"
#include "apps/orvcox/Terminal.h"
#include "core/CCoxPH.h"
#include "core/StringTable.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "standalone/analysis/ApplyDefinition.h"
#include "standalone/analysis/ResultDefinition.h"
#include "standalone/documents/DocumentFormats.h"
#include "standalone/documents/WriteDocuments.h"
#include "standalone/host/Interrupt.h"
#include "standalone/host/StandaloneHost.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

// Returns how many results were refused, each with a message.
int CreateResults(CCoxPH& analysis, CCoxPHResults& results, StandaloneHost& host, const ResolvedResults& resolved) {
  const double level = resolved.Confidence;
  int refused = 0;
  const std::map<std::string, std::function<void()>> creators = {
      {"summary", [&] { analysis.CreateSummarySpreadsheet(); }},
      {"estimates", [&] { analysis.CreateParameterEstimateSpreadsheet(level); }},
      {"type3", [&] { analysis.CreateType3Spreadsheet(level); }},
      {"history", [&] { analysis.CreateIterationHistorySpreadsheet(); }},
      {"design", [&] { analysis.CreateDesignTermsSpreadsheet(); }},
      {"covariance", [&] { analysis.CreateCovarianceSpreadsheet(); }},
      {"correlation", [&] { analysis.CreateCorrelationSpreadsheet(); }},
      {"contrast", [&] { refused += results.EstimateLinearCombination() != 0 ? 1 : 0; }},
      {"steps", [&] { results.ModelBuildingSummary(); }},
      {"residuals", [&] { refused += results.CreateResidualTable(); }},
      {"survivor", [&] { results.CreateSurvivorSummary(); }},
      {"hazard", [&] { results.CreateCumulativeHazardSummary(); }},
      {"phtest", [&] { refused += results.TestProportionalHazards(); }},
  };
  for (const std::string& name : resolved.Results) {
    host.SetResultName(name);
    creators.at(name)();
  }
  return refused;
}

class FitRun {
 public:
  FitRun(const FitOptions& options, std::ostream& out, std::ostream& err) : m_options(options), m_out(out), m_err(err) {
    const Terminal terminal = DescribeTerminal(err);
    m_progress = terminal.IsTerminal && !options.Quiet ? &err : nullptr;
  }

  int Run() {
    // What cannot be written is told before the run, as far as that can be seen.
    for (const OutputTarget& target : m_options.Targets) CheckOutputPlace(*target.Format, target.File);
    const MemoryTable table = ReadWithProgress(m_options.Table, m_progress);
    StandaloneHost host(table, m_progress);
    host.SetMessageSink([this](const std::string& text) { m_err << "orvcox: " << text << '\n'; });
    CCoxPH analysis(nullptr);
    analysis.AttachHost(host);
    analysis.Init();

    AppliedDefinition applied = ApplyDefinition(m_options.Definition, host, analysis);
    for (const std::string& note : applied.Notes) Note(note);
    ResolvedResults resolved;
    if (!applied.Refused) resolved = ResolveResults(m_options.Results, host, analysis);
    const bool failed = applied.Refused || analysis.RunFromStartup(applied.Fields, nullptr) != 0;
    if (WasInterrupted()) return Cancelled();
    for (const std::string& note : NotesOnRun(analysis, host)) Note(note);
    if (failed) {
      NoteOnRefusal(host);
      WriteFailure(analysis, host);
      return ExitCodes::AnalysisFailed;
    }
    if (analysis.m_pCoxFit->m_FitStatus == FitStatuses::OutOfMemory) {
      m_err << "orvcox: not enough memory for the fit.\n";
      return ExitCodes::AnalysisFailed;
    }
    CCoxPHResults results(analysis);
    std::vector<std::string> notes;
    resolved.Results = ApplyResults(resolved, results, notes);
    for (const std::string& note : notes) Note(note);
    const int refused = CreateResults(analysis, results, host, resolved);
    if (WasInterrupted()) return Cancelled();
    Write(analysis, host);
    if (refused != 0) return ExitCodes::AnalysisFailed;
    // Results that have not arrived on standard output are a failure, which the caller tells.
    const bool arrived = static_cast<bool>(m_out.flush());
    if (arrived && !m_options.SaveJob.empty()) SaveJob(m_options);
    return ExitCodes::Done;
  }

 private:
  void Note(const std::string& text) {
    if (m_options.Quiet) return;
    m_err << "note: " << (m_options.Wording ? m_options.Wording(text) : text) << '\n';
  }

  void NoteOnRefusal(const StandaloneHost& host) {
    if (!m_options.NoteOnRefusal || m_options.Quiet) return;
    for (const std::string& text : host.Messages()) {
      const std::string note = m_options.NoteOnRefusal(FindModuleTextId(text));
      if (!note.empty()) m_err << "note: " << note << '\n';
    }
  }

  int Cancelled() {
    m_err << "orvcox: cancelled.\n";
    return ExitCodes::Cancelled;
  }

  void Write(const CCoxPH& analysis, const StandaloneHost& host) {
    const RunReport report = ReportRun(analysis, host, ORV_VERSION);
    for (const OutputTarget& target : m_options.Targets) {
      CheckDocumentsFit(*target.Format, target.File, host.Documents());
    }
    for (const OutputTarget& target : m_options.Targets) {
      WriteDocuments(*target.Format, target.File, report, host.Documents());
    }
    if (m_options.Targets.empty()) WriteToStandardOutput(report, host);
  }

  // A program that reads the results finds the reason where it looks for them; a person has it on standard error.
  void WriteFailure(const CCoxPH& analysis, const StandaloneHost& host) {
    const RunReport report = ReportRun(analysis, host, ORV_VERSION);
    for (const OutputTarget& target : m_options.Targets) {
      if (IsForPrograms(*target.Format)) {
        WriteDocuments(*target.Format, target.File, report, host.Documents());
      }
    }
    if (m_options.Targets.empty() && IsForPrograms(*m_options.StandardFormat)) WriteToStandardOutput(report, host);
  }

  static bool IsForPrograms(const DocumentFormat& format) { return format.Name == "json"; }

  void WriteToStandardOutput(const RunReport& report, const StandaloneHost& host) {
    const Terminal terminal = DescribeTerminal(m_out);
    m_out << m_options.StandardFormat->Write(report, host.Documents(), {terminal.Width, terminal.Bold}) << std::flush;
  }

  const FitOptions& m_options;
  std::ostream& m_out;
  std::ostream& m_err;
  std::ostream* m_progress = nullptr;
};

}  // namespace

int RunFit(const FitOptions& options, std::ostream& out, std::ostream& err) {
  return FitRun(options, out, err).Run();
}

}  // namespace orv

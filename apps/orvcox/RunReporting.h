// What is told about a run besides its tables: the counts of left-out cases, and the notes on standard error.
#pragma once

#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "standalone/documents/RunReport.h"
#include "standalone/host/StandaloneHost.h"

namespace orv {

inline constexpr const char* kProgramName = "orvcox";

// The record of a run, finished, failed or refused; what is not known is left out.
RunReport ReportRun(const CCoxPH& analysis, const StandaloneHost& host, const std::string& version);

// Sentences for a person: cases left out and why, columns left out of the fit, no convergence.
std::vector<std::string> NotesOnRun(const CCoxPH& analysis, const StandaloneHost& host);

}  // namespace orv

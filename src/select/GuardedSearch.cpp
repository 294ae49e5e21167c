#include "select/GuardedSearch.h"

#include <algorithm>

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "host/TextIds.h"

namespace orv {

namespace {

// It has no number in the string table.
constexpr const char* kTitle = "Performing model building";
constexpr int kFewestSteps = 2;

}  // namespace

SearchProgress::SearchProgress(CCoxFit& fit, int steps)
    : m_fit(fit), m_bar(fit.Owner().GetHost().NewProgressBar(std::max(steps, kFewestSteps), kTitle)) {
  if (m_bar) m_bar->ShowNow();
}

bool SearchProgress::Advance() {
  return MoveTo(++m_done);
}

bool SearchProgress::MoveTo(int position) {
  const bool cancelledAtBar = m_bar && m_bar->ProgressBarUpdate(position);
  return cancelledAtBar || IsCancelled();
}

bool SearchProgress::IsCancelled() const {
  return m_fit.Owner().IsCancelled();
}

void RunGuarded(CCoxFit& fit, int steps, const std::function<void(SearchProgress&)>& search) {
  CCoxPH& owner = fit.Owner();
  SearchProgress progress(fit, steps);
  try {
    const FloatingPointRegime regime;
    search(progress);
  } catch (...) {
    // Whatever fails, memory included, ends the search and not the analysis.
    progress.Close();
    Host& host = owner.GetHost();
    if (host.IsOleAutomation()) host.SetMessageErrorHandler(1);
    owner.ShowText(TextIds::ModelBuildingStopped);
  }
}

}  // namespace orv

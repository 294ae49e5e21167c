#include "host/Progress.h"

#include <algorithm>

#include "host/CAnalysisSupport.h"

namespace orv {

void OpenProgress(Host& host, ProgressHolder& holder, int total, const std::string& title) {
  holder.Total = std::max(total, 2);
  CloseProgress(host, holder);
  holder.Bar = host.NewProgressBar(holder.Total, title);
  if (holder.Bar) holder.Bar->ShowNow();
}

void StepProgress(ProgressHolder& holder, int done, double& nextThreshold, bool& cancelled) {
  const double percentage = 100.0 / holder.Total * done;
  if (percentage < nextThreshold) return;
  if (holder.Bar) cancelled = holder.Bar->ProgressBarUpdate(done);
  nextThreshold += 1.0;
}

void CloseProgress(Host& host, ProgressHolder& holder) {
  if (!holder.Bar) return;
  const ResultsLock lock(host);
  holder.Bar.reset();
}

}  // namespace orv

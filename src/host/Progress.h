// The progress holder of an analysis: a bar that is touched at most once per percent.
#pragma once

#include <memory>
#include <string>

#include "host/Host.h"

namespace orv {

struct ProgressHolder {
  std::unique_ptr<CQvdProgressBar> Bar;
  int Total = 0;
};

// Closes a bar that is open, makes a new one with a range of 0 to `total` (at least 2) and shows it at once.
void OpenProgress(Host& host, ProgressHolder& holder, int total, const std::string& title);

// Reports that `done` of the total are done. When the percentage reaches `nextThreshold` the bar moves to `done`,
// `cancelled` is read from it, and the threshold rises by 1; otherwise nothing is touched.
void StepProgress(ProgressHolder& holder, int done, double& nextThreshold, bool& cancelled);

// Destroys the bar, with the results locked.
void CloseProgress(Host& host, ProgressHolder& holder);

}  // namespace orv

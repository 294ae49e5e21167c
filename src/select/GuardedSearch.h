// What surrounds every search: the floating-point regime, the progress bar with its cancel query, and what becomes of a
// numerical failure.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/Host.h"

namespace orv {

class CCoxFit;

// The progress bar of a search.
class SearchProgress {
 public:
  // Opens a bar of at least 2 steps and shows it.
  SearchProgress(CCoxFit& fit, int steps);

  // One more step is done. Returns true when the user has asked to cancel.
  bool Advance();
  // The same to a position, for loops whose steps are too quick to show one by one.
  bool MoveTo(int position);
  // True when the user has asked to cancel elsewhere than at the bar, which answers only when it moves.
  bool IsCancelled() const;
  // Takes the bar off the screen.
  void Close() { m_bar.reset(); }

 private:
  CCoxFit& m_fit;
  std::unique_ptr<CQvdProgressBar> m_bar;
  int m_done = 0;
};

// Runs a search with a bar of `steps`. When numbers, or memory, fail in it the bar is closed and a message tells that
// the analysis goes on with the effects selected so far: m_ActiveColumns stays as the search left it.
void RunGuarded(CCoxFit& fit, int steps, const std::function<void(SearchProgress&)>& search);

}  // namespace orv

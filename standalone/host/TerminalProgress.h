// A progress bar on one line of a terminal.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

#include "host/Host.h"

namespace orv {

// Draws on `out` once it has lived for a moment, so that quick work leaves the terminal alone, and wipes its line when
// it goes. ProgressBarUpdate returns true after Ctrl-C.
class TerminalProgress : public CQvdProgressBar {
 public:
  // `out` must outlive the bar; null draws nothing and only asks for Ctrl-C.
  TerminalProgress(std::ostream* out, double total, std::string title);
  ~TerminalProgress() override;
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;

  void ShowNow() override {}
  bool ProgressBarUpdate(int position) override;
  // The same for positions that do not fit an int.
  void MoveTo(double position);

 private:
  std::ostream* m_out;
  double m_total;
  std::string m_title;
  std::chrono::steady_clock::time_point m_start;
  int m_drawnPercent = -1;
};

}  // namespace orv

#include "standalone/host/TerminalProgress.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "standalone/host/Interrupt.h"

namespace orv {

namespace {

constexpr std::chrono::milliseconds kQuickWork{300};
constexpr int kBarWidth = 30;

}  // namespace

TerminalProgress::TerminalProgress(std::ostream* out, double total, std::string title)
    : m_out(out), m_total(total), m_title(std::move(title)), m_start(std::chrono::steady_clock::now()) {}

TerminalProgress::~TerminalProgress() {
  if (m_out != nullptr && m_drawnPercent >= 0) *m_out << "\r\x1b[K" << std::flush;
}

bool TerminalProgress::ProgressBarUpdate(int position) {
  MoveTo(position);
  return WasInterrupted();
}

void TerminalProgress::MoveTo(double position) {
  if (m_out == nullptr || !(m_total > 0.0)) return;
  const int percent = static_cast<int>(std::clamp(position / m_total, 0.0, 1.0) * 100.0);
  if (percent == m_drawnPercent || std::chrono::steady_clock::now() - m_start < kQuickWork) return;
  m_drawnPercent = percent;
  const auto filled = static_cast<std::size_t>(percent * kBarWidth / 100);
  *m_out << '\r' << m_title << " [" << std::string(filled, '#') << std::string(kBarWidth - filled, ' ') << "] "
         << percent << " %" << std::flush;
}

}  // namespace orv

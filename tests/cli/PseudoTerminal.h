// PseudoTerminal: a terminal without a screen, for what a program shows on terminals only.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace orv::testing {

class PseudoTerminal {
 public:
  // Throws std::system_error when the system has none to give.
  PseudoTerminal();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // The side of the program: a file descriptor that is a terminal.
  int ProgramSide() const { return m_programSide; }
  // Waits until `text` stands on the terminal. Returns false when the time is over first.
  bool WaitForText(std::string_view text, std::chrono::milliseconds time);
  // All that has come so far; lines end in CR and LF.
  const std::string& Shown();

 private:
  void Read(std::chrono::milliseconds time);

  int m_screenSide = -1;
  int m_programSide = -1;
  std::string m_shown;
};

}  // namespace orv::testing

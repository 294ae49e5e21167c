#include "standalone/host/Interrupt.h"

#include <signal.h>  // sigaction, which <csignal> lacks

#include <csignal>

namespace orv {

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

extern "C" void KeepInterrupt(int signal) {
  g_interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void CatchInterrupts() {
  g_interrupted = 0;
  struct sigaction current {};
  sigaction(SIGINT, nullptr, &current);
  // A shell makes its background jobs deaf to Ctrl-C, and so they stay.
  if (current.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = KeepInterrupt;
  // No SA_RESTART: a program that waits for its input has to notice.
  sigaction(SIGINT, &action, nullptr);
}

bool WasInterrupted() {
  return g_interrupted != 0;
}

}  // namespace orv

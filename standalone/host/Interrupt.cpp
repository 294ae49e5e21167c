#include "standalone/host/Interrupt.h"

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
  std::signal(SIGINT, KeepInterrupt);
}

bool WasInterrupted() {
  return g_interrupted != 0;
}

}  // namespace orv

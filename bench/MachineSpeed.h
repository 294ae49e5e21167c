// What this machine can do at most, measured in the same run as the cases: the baselines of their ratios.
#pragma once

#include <string>

namespace orv::bench {

struct MachineSpeed {
  std::string VectorUnit;             // the widest vector unit that the peak was measured on
  double MultiplyAdds = 0.0;          // per second, on that unit: the peak
  double PortableMultiplyAdds = 0.0;  // per second, with the instructions that every machine of the kind has
  double TriadBytes = 0.0;            // memory bandwidth, bytes per second
};

// Takes about half a second. All on one thread, in its CPU time. Each figure is the best of several runs, since what
// else the machine does can only lower it. Throws std::logic_error when a kernel gives a wrong answer.
//
// Multiply-adds: s_k = s_k * factor + term for so many independent s_k that they fill the registers and the chains of
// additions overlap. No memory is touched. The compiler vectorises the loop over k; it is compiled for each kind of
// vector unit, and the best that this processor has is run. Fused multiply-adds are allowed here.
//
// Memory bandwidth: the triad a_i = b_i + s c_i (McCalpin, 1995) over arrays well beyond the caches, counted as 24
// bytes an element.
MachineSpeed MeasureMachine();

// The first of these figures alone, in 10 to 20 ms: what the machine can do just now. A processor that is shared, or
// that changes its clock, does not do the same all the time.
double PeakOfThisMoment();

// The CPU time that this thread has used, in seconds. The cases are timed by the same clock.
double ThreadSeconds();

}  // namespace orv::bench

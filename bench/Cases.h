// The benchmark cases of this folder. Each file registers its own and names the figures that the report reads.
#pragma once

#include <string>

namespace orv::bench {

// The figures that a case leaves for the report, as counters of the benchmark.
namespace Figures {
inline constexpr char Cases[] = "cases";                     // n
inline constexpr char Columns[] = "columns";                 // p, or the columns of a file
inline constexpr char MultiplyAdds[] = "madds";              // in one iteration, see MultiplyAddsOfPass
inline constexpr char Bytes[] = "bytes";                     // read in one iteration
inline constexpr char PeakRate[] = "peak_madds";             // multiply-adds per second right after the run
inline constexpr char PeakBytes[] = "peak";                  // memory that one iteration adds at its peak
inline constexpr char PlainSeconds[] = "plain_s";            // what the plain form of the pass takes
inline constexpr char Passes[] = "passes";                   // over the cases in one iteration
inline constexpr char ScanSeconds[] = "scan_s";              // what a plain scan of the same bytes takes
inline constexpr char Events[] = "events";                   // complete cases
inline constexpr char TiedEvents[] = "tied";                 // d, the events at each time that has any
inline constexpr char Subsets[] = "subsets";                 // that the definition of the discrete likelihood sums over
inline constexpr char RecursionSeconds[] = "recursion_s";    // what the recursion over the same members takes
inline constexpr char TakesEnumeration[] = "enumerated";     // 1 when the pass would enumerate them, else 0
inline constexpr char Steps[] = "steps";                     // of a selection
inline constexpr char FitSeconds[] = "fits_s";               // what their fits and evaluations take
inline constexpr char Scored[] = "scored";                   // subsets that a search looks at
inline constexpr char ExhaustiveSeconds[] = "exhaustive_s";  // what looking at all takes; 0 when not measured
inline constexpr char Pairs[] = "pairs";                     // of an event time and a row at risk
}  // namespace Figures

// "pass/efron/heavy-ties/100000x10": what is timed, on which kind of data, and their size.
std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns);
// "discrete/survival/500x10x30": with the tied events at each time as well.
std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns, int tiedEvents);

// read/...: a file from disk to a table in memory.
void RegisterReadBenchmarks();
// cases/...: a table in memory to the sorted case table of a run: the design and the cases, without a fit.
void RegisterCaseBenchmarks();
// pass/...: one evaluation of log partial likelihood, score and information.
void RegisterPassBenchmarks();
// interval/...: the same over intervals (start, stop]; interval/making/...: what a fit pays once before its passes.
void RegisterIntervalBenchmarks();
// discrete/...: the same under the discrete likelihood, of right-censored rows and of intervals.
void RegisterDiscreteBenchmarks();
// discrete/subsets/...: the sums over the subsets of one risk set, by enumeration.
void RegisterSubsetBenchmarks();
// timedependent/...: the same with an effect that changes with time.
void RegisterTimeDependentBenchmarks();
// derived/...: residuals and what else follows from a fit.
void RegisterDerivedBenchmarks();
// select/...: a table in memory to the model selected, and the search for best subsets.
void RegisterSelectionBenchmarks();
// fit/...: a table in memory to the fitted model, with the cases read and sorted.
void RegisterFitBenchmarks();

// The multiply-adds of one pass by blocks of rows: for a case that enters or leaves p each for its linear predictor,
// its parts in the sum S1 and in the score, and two for its centring; p (p + 1) / 2 for each case in the sum S2, for
// each case of a block in which a group closes, and, under Efron's rule with ties, for each case of the other blocks in
// the sum over tied events and two for each tied group. Not counted: exponentials, logarithms, divisions, and what
// tiles compute beyond the triangle.
//   moves   cases that enter, and cases that leave
//   groups  times with events; as many as events without ties
double MultiplyAddsOfPass(double moves, double events, double groups, double covariates, bool efron);

}  // namespace orv::bench

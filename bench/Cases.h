// The benchmark cases of this folder. Each file registers its own and names the figures that the report reads.
#pragma once

#include <string>

namespace orv::bench {

// The figures that a case leaves for the report, as counters of the benchmark.
namespace Figures {
inline constexpr char Cases[] = "cases";         // n
inline constexpr char Columns[] = "columns";     // p, or the columns of a file
inline constexpr char MultiplyAdds[] = "madds";  // in one iteration, see MultiplyAddsOfPass
inline constexpr char Bytes[] = "bytes";         // read in one iteration
inline constexpr char Passes[] = "passes";       // over the cases in one iteration
inline constexpr char ScanSeconds[] = "scan_s";  // what a plain scan of the same bytes takes
}  // namespace Figures

// "pass/efron/heavy-ties/100000x10": what is timed, on which kind of data, and their size.
std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns);

// read/...: a delimited file from disk to a table in memory.
void RegisterReadBenchmarks();
// cases/...: a table in memory to the sorted case table of a run: the design and the cases, without a fit.
void RegisterCaseBenchmarks();
// pass/...: one evaluation of log partial likelihood, score and information.
void RegisterPassBenchmarks();
// fit/...: a table in memory to the fitted model, with the cases read and sorted.
void RegisterFitBenchmarks();

// The multiply-adds that the formulas of one pass ask for: p (p + 1) / 2 + p for each case that enters the sums S1 and
// S2 of the risk set, for each event that enters the sums of its tied group (under Efron's rule only), and for each
// event term that enters score and information. Not counted: the linear predictors, exponentials, logarithms and
// divisions. The count is that of the definition, whatever the code saves.
double MultiplyAddsOfPass(double cases, double events, double covariates, bool efron);

}  // namespace orv::bench

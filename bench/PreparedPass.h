// PreparedPass: one pass over generated cases, made and checked before it is timed.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ReferencePass.h"
#include "SurvivalAnalysis.h"

namespace orv::bench {

class PreparedPass {
 public:
  // The cases read and sorted, a pass over them, and a vector of parameters to evaluate it at. Throws
  // std::runtime_error when the module refuses the cases or memory is out.
  PreparedPass(const SurvivalKind& kind, int cases, int covariates);

  // One pass. REQUIRES: a FloatingPointRegime, as a fit has one.
  double Evaluate() { return m_pass->Evaluate(m_beta.data(), m_U.data(), m_H.Rows()); }
  // Makes the pass again, as a fit makes its own.
  void MakeAnew();

  // One pass, held against a reference: see AgreedDigits.
  double DigitsAgainst(const LikelihoodValues& reference);
  // One pass, as the reference of another.
  LikelihoodValues Values();
  // The same with the plain form of the pass, which is timed: PlainSeconds is the least of a few evaluations.
  double DigitsAgainstPlainForm();

  const MemoryTable& Table() const { return m_analysis.Table(); }
  const CCoxData& Data() const { return m_data; }
  const std::vector<double>& Beta() const { return m_beta; }

  double Digits = 0.0;        // of agreement with the reference, in the worst number
  double PlainSeconds = 0.0;  // CPU time of one evaluation by the plain form; 0 when that was not asked for

 private:
  SurvivalAnalysis m_analysis;
  CCoxData& m_data;
  std::vector<double> m_beta;
  std::unique_ptr<PartialLikelihood> m_pass;
  std::vector<double> m_U;
  WorkMatrix m_H;
};

// The prepared pass of a case, made at its first run and kept for the further ones. When it cannot be made, or agrees
// with its reference to fewer than 10 digits, the case is skipped with that error and null comes back.
//   make  returns the pass with its Digits set
PreparedPass* LatestPass(benchmark::State& state,
                         const std::string& name,
                         const std::function<std::unique_ptr<PreparedPass>()>& make);

// The figures of a case that are the same for every kind of pass, and its answer.
void LeaveFigures(benchmark::State& state, const PreparedPass& pass);

}  // namespace orv::bench

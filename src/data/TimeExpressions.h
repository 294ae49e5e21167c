// Time expressions: formulas of time-dependent covariates, compiled before a run and evaluated inside the fit.
//
// A formula reads variables of the input table and the symbol "T_", which stands for the time at which it is evaluated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/CAnalysisSupport.h"

namespace orv {

// The first value of an expression that could not be computed in a fit.
struct ExpressionFailure {
  int Expression = 0;  // from 1
  int CaseNumber = 0;  // of the input table
  double Time = 0.0;
};

// The compiled formulas, in the layout that the host's compiler and saved stores share:
//
//   offset                    content
//   0                         uint16: number of expressions
//   8 + (p - 1) * 32104       expression p: 32000 bytes of instructions, int16 number of symbols, int16 symbol numbers
//   1284168                   int16: number of distinct variables
//   1284170                   int16 each: their numbers, at most 50
//   1284272                   double each: arguments of the expression in hand, at most 50
class ExpressionStore {
 public:
  static constexpr std::size_t kSize = 1284672;
  static constexpr std::size_t kRecordSize = 32104;
  static constexpr int kInstructionBytes = 32000;
  static constexpr int kMostExpressions = 40;
  static constexpr int kMostSymbols = 50;    // of one expression, and distinct variables in the store
  static constexpr int kMostVariables = 38;  // distinct variables that an analysis may read

  // Takes a block from the host. Failed() when there is none.
  explicit ExpressionStore(Host& host);
  ~ExpressionStore();
  ExpressionStore(const ExpressionStore&) = delete;
  ExpressionStore& operator=(const ExpressionStore&) = delete;

  bool Failed() const { return m_block == nullptr; }
  int ExpressionCount() const;
  void SetExpressionCount(int count);
  // Expression numbers count from 1.
  unsigned char* Instructions(int expression) { return m_block + RecordOffset(expression); }
  const unsigned char* Instructions(int expression) const { return m_block + RecordOffset(expression); }
  int SymbolCount(int expression) const { return Symbols(expression)[-1]; }
  void SetSymbolCount(int expression, int count) { Symbols(expression)[-1] = static_cast<std::int16_t>(count); }
  std::int16_t* Symbols(int expression);
  const std::int16_t* Symbols(int expression) const;
  int VariableCount() const { return *Short(kVariableCountOffset); }
  const std::int16_t* Variables() const { return Short(kVariableCountOffset) + 1; }
  // Appends a variable that is not in the list yet. False when the list is full.
  bool AddVariable(int variable);
  double* Arguments() const;

  // What a fit leaves for the message to the user; it is no part of the layout. The first failure stays.
  void NoteFailure(const ExpressionFailure& failure) {
    if (!m_failure) m_failure = failure;
  }
  const std::optional<ExpressionFailure>& Failure() const { return m_failure; }

 private:
  static constexpr std::size_t kVariableCountOffset = 1284168;
  static constexpr std::size_t kArgumentOffset = 1284272;

  static std::size_t RecordOffset(int expression) {
    constexpr std::size_t kFirstRecord = 8;
    return kFirstRecord + static_cast<std::size_t>(expression - 1) * kRecordSize;
  }
  std::int16_t* Short(std::size_t offset) const { return reinterpret_cast<std::int16_t*>(m_block + offset); }

  Host& m_host;
  unsigned char* m_block = nullptr;
  std::optional<ExpressionFailure> m_failure;
};

// What a compilation yields. `Variables` lists the table's variables that any formula reads, once each, in order of
// first appearance, without "T_".
struct CompiledVariables {
  std::int16_t* Numbers = nullptr;  // room for 38
  std::int16_t Count = 0;
};

// Compiles all expressions into a new store, which replaces `store`. Returns 0 on success. Otherwise the store is
// released; for an expression with more than 50 symbols, or more than 38 distinct variables, a message has been shown.
//   longest  characters of an expression that are read at most
int CompileTimeExpressions(CAnalysisSupport& analysis,
                           void* parent,
                           const std::vector<std::string>& expressions,
                           std::size_t longest,
                           std::unique_ptr<ExpressionStore>& store,
                           CompiledVariables& variables);

// The value of an expression for a case at a time.
//   variables  the case's raw values of the store's variables, in their order
//   error      out: 1 when there is no store or the formula cannot be computed; then the value is 0
// Allocates nothing.
double EvaluateTimeExpression(Host& host,
                              const ExpressionStore* store,
                              int expression,
                              double time,
                              const double* variables,
                              int timeSymbol,
                              int& error);

}  // namespace orv

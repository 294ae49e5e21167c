// Formulas of time-dependent covariates compiled for a small table, with a record of what the host was asked.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "data/TimeExpressions.h"
#include "support/TestAnalysis.h"
#include "support/TestHost.h"

namespace orv::testing {

// Keeps what the compiler was given, and may answer in its place.
class CompilingHost : public TestHost {
 public:
  using TestHost::TestHost;

  std::vector<std::string> Texts;  // of each call of COMP, with the first byte and without the last zero
  std::vector<std::string> Names;  // that the last call could use
  std::vector<CompiledFormulaArea> Areas;
  std::function<int(int call, CompiledFormulaArea& area)> Compile;  // from call 1; empty: the host's own compiler
  std::vector<std::string> Blocks;                                  // "get 1284672" and "free", in order
  unsigned char* Block = nullptr;                                   // the last block of GetMem
  void* MessageParent = nullptr;

  int COMP(const char* text, const CAnalysisNamesArray& names, CompiledFormulaArea& area) override {
    Texts.push_back(text[0] + std::string(text + 1));
    Names.clear();
    for (int number = 1; number <= names.Count(); ++number) Names.push_back(names.Name(number));
    Areas.push_back(area);
    return Compile ? Compile(static_cast<int>(Texts.size()), area) : TestHost::COMP(text, names, area);
  }
  int GetMem(void** address, std::size_t size) override {
    Blocks.push_back("get " + std::to_string(size));
    const int failed = TestHost::GetMem(address, size);
    if (failed == 0) Block = static_cast<unsigned char*>(*address);
    return failed;
  }
  void FreeMem(void* address) override {
    Blocks.emplace_back("free");
    TestHost::FreeMem(address);
  }
  void DisplayInstError(const ModuleInstance& instance, void* parent, int textId) override {
    MessageParent = parent;
    TestHost::DisplayInstError(instance, parent, textId);
  }
};

// As many variables as the limits are about, named x1, x2, and so on.
inline std::vector<TestColumn> NumberedColumns(int count) {
  std::vector<TestColumn> columns;
  for (int k = 1; k <= count; ++k) columns.push_back({"x" + std::to_string(k), {1.0, 2.0}});
  return columns;
}

// "T_*(x1+x2)" for the variables 1 to 2.
inline std::string SumOf(int first, int last) {
  std::string sum;
  for (int k = first; k <= last; ++k) sum += (k > first ? "+x" : "x") + std::to_string(k);
  return "T_*(" + sum + ")";
}

// An analysis with the store of the formulas compiled last.
class TimeExpressions {
 public:
  explicit TimeExpressions(const std::vector<TestColumn>& columns)
      : Table(MakeTable(columns)), Host(Table), Analysis(nullptr) {
    Analysis.AttachHost(Host);
    Analysis.Init();
  }
  int Compile(const std::vector<std::string>& expressions, std::size_t longest = 32000) {
    CompiledVariables variables{m_numbers, 0};
    Host.Texts.clear();
    const int failed = CompileTimeExpressions(Analysis, &m_parent, expressions, longest, Store, variables);
    Listed.assign(m_numbers, m_numbers + variables.Count);
    return failed;
  }
  double Evaluate(int expression, double time, const std::vector<double>& variables, int& error) {
    return EvaluateTimeExpression(Host, Store.get(), expression, time, variables.data(), TimeSymbol(), error);
  }
  int TimeSymbol() const { return Table.VariableCount() + 1; }
  void* Parent() { return &m_parent; }
  // What stands in the block at an offset.
  template <typename T>
  T At(std::size_t offset) const {
    T value;
    std::memcpy(&value, Host.Block + offset, sizeof value);
    return value;
  }
  std::vector<std::int16_t> ShortsAt(std::size_t offset, int count) const {
    std::vector<std::int16_t> shorts;
    for (int k = 0; k < count; ++k) shorts.push_back(At<std::int16_t>(offset + 2 * static_cast<std::size_t>(k)));
    return shorts;
  }

  MemoryTable Table;
  CompilingHost Host;
  CCoxPH Analysis;
  std::unique_ptr<ExpressionStore> Store;
  std::vector<std::int16_t> Listed;  // the variables of the last compilation

 private:
  std::int16_t m_numbers[38] = {};
  int m_parent = 0;
};

}  // namespace orv::testing

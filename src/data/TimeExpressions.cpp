#include "data/TimeExpressions.h"

#include <algorithm>
#include <cstring>

#include "host/TextIds.h"

namespace orv {

namespace {

constexpr const char* kTimeSymbol = "T_";

char UpperCase(char character) {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

// The form in which the host's compiler takes a text.
std::string CompilerText(const std::string& expression, std::size_t longest) {
  const std::size_t length = std::min({expression.size(), longest, expression.find('\0')});
  std::string text(1, static_cast<char>(length + 1));
  text.append(expression, 0, length);
  text += ';';
  // The length is no letter of the text.
  std::transform(text.begin() + 1, text.end(), text.begin() + 1, UpperCase);
  return text;
}

// Appends the variables of an expression to the distinct list. False when the list is full.
bool CollectVariables(ExpressionStore& store, int expression, int timeSymbol) {
  const std::int16_t* symbols = store.Symbols(expression);
  for (int k = 0; k < store.SymbolCount(expression); ++k) {
    if (symbols[k] != timeSymbol && !store.AddVariable(symbols[k])) return false;
  }
  return true;
}

int CompileInto(CAnalysisSupport& analysis,
                void* parent,
                const std::vector<std::string>& expressions,
                std::size_t longest,
                ExpressionStore& store) {
  CAnalysisNamesArray names;
  analysis.GetHost().GetVarNamFromTable(names);
  const int timeSymbol = names.InsertNewStr(kTimeSymbol);
  if (expressions.size() > static_cast<std::size_t>(ExpressionStore::kMostExpressions)) return 1;
  // The text speaks of iterations; it is the one that has always been shown for these limits.
  const auto beyondLimit = [&] {
    analysis.DisplayInstError(parent, TextIds::IterationsOutOfRange);
    return 1;
  };
  for (const std::string& expression : expressions) {
    const int number = store.ExpressionCount() + 1;
    CompiledFormulaArea area;
    area.Instructions = store.Instructions(number);
    area.InstructionBytes = ExpressionStore::kInstructionBytes;
    area.Symbols = store.Symbols(number);
    area.SymbolRoom = ExpressionStore::kMostSymbols;
    const int memory = analysis.GetHost().COMP(CompilerText(expression, longest).c_str(), names, area);
    if (memory != 0) return memory;
    if (area.ErrorPosition > 0) return area.ErrorPosition;
    if (area.SymbolCount > ExpressionStore::kMostSymbols) return beyondLimit();
    store.SetSymbolCount(number, area.SymbolCount);
    if (!CollectVariables(store, number, timeSymbol)) return beyondLimit();
    store.SetExpressionCount(number);
  }
  return store.VariableCount() > ExpressionStore::kMostVariables ? beyondLimit() : 0;
}

}  // namespace

ExpressionStore::ExpressionStore(Host& host) : m_host(host) {
  void* block = nullptr;
  if (host.GetMem(&block, kSize) != 0) return;
  m_block = static_cast<unsigned char*>(block);
  std::memset(m_block, 0, kSize);
}

ExpressionStore::~ExpressionStore() {
  if (m_block != nullptr) m_host.FreeMem(m_block);
}

int ExpressionStore::ExpressionCount() const {
  return *Short(0);
}

void ExpressionStore::SetExpressionCount(int count) {
  *Short(0) = static_cast<std::int16_t>(count);
}

std::int16_t* ExpressionStore::Symbols(int expression) {
  return Short(RecordOffset(expression) + kInstructionBytes) + 1;
}

const std::int16_t* ExpressionStore::Symbols(int expression) const {
  return Short(RecordOffset(expression) + kInstructionBytes) + 1;
}

bool ExpressionStore::AddVariable(int variable) {
  std::int16_t* count = Short(kVariableCountOffset);
  std::int16_t* numbers = count + 1;
  if (std::find(numbers, numbers + *count, variable) != numbers + *count) return true;
  if (*count >= kMostSymbols) return false;
  numbers[(*count)++] = static_cast<std::int16_t>(variable);
  return true;
}

double* ExpressionStore::Arguments() const {
  return reinterpret_cast<double*>(m_block + kArgumentOffset);
}

int CompileTimeExpressions(CAnalysisSupport& analysis,
                           void* parent,
                           const std::vector<std::string>& expressions,
                           std::size_t longest,
                           std::unique_ptr<ExpressionStore>& store,
                           CompiledVariables& variables) {
  store.reset();
  store = std::make_unique<ExpressionStore>(analysis.GetHost());
  const int failed = store->Failed() ? 1 : CompileInto(analysis, parent, expressions, longest, *store);
  if (failed != 0) {
    store.reset();
    return failed;
  }
  variables.Count = static_cast<std::int16_t>(store->VariableCount());
  std::copy_n(store->Variables(), variables.Count, variables.Numbers);
  return 0;
}

double EvaluateTimeExpression(Host& host,
                              const ExpressionStore* store,
                              int expression,
                              double time,
                              const double* variables,
                              int timeSymbol,
                              int& error) {
  error = 1;
  if (store == nullptr || expression < 1 || expression > store->ExpressionCount()) return 0.0;
  const std::int16_t* symbols = store->Symbols(expression);
  const std::int16_t* distinct = store->Variables();
  const std::int16_t* const end = distinct + store->VariableCount();
  double* arguments = store->Arguments();
  for (int k = 0; k < store->SymbolCount(expression); ++k) {
    if (symbols[k] == timeSymbol) {
      arguments[k] = time;
      continue;
    }
    const std::int16_t* place = std::find(distinct, end, symbols[k]);
    // A symbol that is not in the list leaves its argument as it was.
    if (place != end) arguments[k] = variables[place - distinct];
  }
  double value = 0.0;
  if (host.RunSpreadsheetFormula(arguments, store->Instructions(expression), value) != 0) return 0.0;
  error = 0;
  return value;
}

}  // namespace orv

#include "standalone/host/StandaloneHost.h"

#include <cstdlib>
#include <ostream>

#include "host/ModuleInstance.h"
#include "standalone/documents/DocumentFromSheet.h"
#include "standalone/formula/HostFormula.h"
#include "standalone/host/Distributions.h"
#include "standalone/host/Interrupt.h"
#include "standalone/host/TableSpreadsheet.h"
#include "standalone/host/TerminalProgress.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

namespace {

constexpr int kRowNameWidth = 40;
constexpr std::int16_t kSelected = 0;
constexpr std::int16_t kDeselected = 1;
constexpr std::int16_t kRejected = 2;

}  // namespace

class StandaloneHost::TableView : public InputTable {
 public:
  explicit TableView(const MemoryTable& table) : m_table(table) {}
  int CaseCount() const override { return m_table.CaseCount(); }
  std::string ValueLabel(int variable, double value) const override {
    return std::string(m_table.LabelOf(variable, value));
  }

 private:
  const MemoryTable& m_table;
};

class StandaloneHost::DocumentView : public HostDocument {
 public:
  explicit DocumentView(ResultDocument& document) : m_document(document) {}
  void SetCustomProperty(const std::string& name, const std::string& text) override {
    m_document.Properties[name] = text;
  }
  std::optional<double> NumberAt(int row, int column) const override {
    const SheetColumn* cells = ColumnAt(row, column);
    const auto at = static_cast<std::size_t>(row);
    if (cells == nullptr || cells->KindOfCell(at) != SheetCellKind::Number) return std::nullopt;
    return cells->Numbers[at];
  }
  std::optional<std::string> TextAt(int row, int column) const override {
    const SheetColumn* cells = ColumnAt(row, column);
    const auto at = static_cast<std::size_t>(row);
    if (cells == nullptr || cells->KindOfCell(at) != SheetCellKind::Text) return std::nullopt;
    return cells->Texts[at];
  }

 private:
  const SheetColumn* ColumnAt(int row, int column) const {
    const auto* sheet = std::get_if<SheetContent>(&m_document.Content);
    if (sheet == nullptr || row < 0 || column < 0) return nullptr;
    if (static_cast<std::size_t>(column) >= sheet->Columns.size()) return nullptr;
    return static_cast<std::size_t>(row) < sheet->RowNames.size() ? &sheet->Columns[static_cast<std::size_t>(column)]
                                                                  : nullptr;
  }

  ResultDocument& m_document;
};

StandaloneHost::StandaloneHost(const MemoryTable& table, std::ostream* progress)
    : m_table(table), m_progress(progress), m_inputTable(std::make_unique<TableView>(table)) {
  for (int variable = 1; variable <= table.VariableCount(); ++variable) {
    m_columns.push_back(table.Variable(variable).Values.data());
  }
}

StandaloneHost::~StandaloneHost() = default;

void StandaloneHost::SetWeightVariable(int variable) {
  m_weights.On = variable > 0;
  m_weights.Variable = variable;
}

void StandaloneHost::InitCommons(HostCommons& commons) {
  commons.Weights = &m_weights;
}

// A program walks the stages itself, so there is nothing to move.
int StandaloneHost::ForwardSequence(int, int) {
  return 0;
}

bool StandaloneHost::CreateModelessDialog(const std::string&) {
  return false;
}

void StandaloneHost::SetMessageErrorHandler(int) {}

bool StandaloneHost::LacksRequiredValue(int caseNumber) {
  m_rejected.resize(m_required.size(), 0);
  for (std::size_t k = 0; k < m_required.size(); ++k) {
    if (!m_table.IsMissing(m_required[k], caseNumber)) continue;
    ++m_rejected[k];
    return true;
  }
  return false;
}

std::int16_t StandaloneHost::cstrtw(int caseNumber,
                                    double* values,
                                    int& hasWeight,
                                    double& weight,
                                    int& weightVariable) {
  values[0] = caseNumber;
  for (std::size_t variable = 0; variable < m_columns.size(); ++variable) {
    values[variable + 1] = m_columns[variable][caseNumber - 1];
  }
  m_weights.Weight = m_weights.On ? values[m_weights.Variable] : 1.0;
  hasWeight = m_weights.On ? 1 : 0;
  weight = m_weights.Weight;
  weightVariable = m_weights.Variable;
  if (!m_isSelected.empty() && m_isSelected[static_cast<std::size_t>(caseNumber) - 1] == 0) return kDeselected;
  return LacksRequiredValue(caseNumber) ? kRejected : kSelected;
}

void StandaloneHost::getmd5(int variable, double& missingCode) {
  const bool known = variable >= 1 && variable <= m_table.VariableCount();
  missingCode = known ? m_table.Variable(variable).MissingCode : kMissingCode;
}

const InputTable& StandaloneHost::GetInputTable() {
  return *m_inputTable;
}

std::unique_ptr<HostSpreadsheet> StandaloneHost::OpenSpreadsheet(const std::string& file) {
  return std::make_unique<TableSpreadsheet>(ReadTable(file));
}

int StandaloneHost::GetVarNameEx(std::uint16_t, int index, std::string& name) {
  if (index < 0 || index >= m_table.VariableCount()) return 1;
  name = m_table.Variable(index + 1).Name;
  return 0;
}

int StandaloneHost::getlab(unsigned caseNumber, std::string& label) {
  if (caseNumber < 1 || caseNumber > static_cast<unsigned>(m_table.CaseCount())) return 1;
  label = m_table.CaseName(static_cast<int>(caseNumber));
  if (label.empty()) label = std::to_string(caseNumber);
  return 0;
}

int StandaloneHost::vvlcod8(int variable, int value, std::string& label, double& labelledValue) {
  label = m_inputTable->ValueLabel(variable, value);
  labelledValue = value;
  return label.empty() ? 1 : 0;
}

int StandaloneHost::vvlcod(int variable, int value, std::string& label, double& labelledValue) {
  return vvlcod8(variable, value, label, labelledValue);
}

void StandaloneHost::dsplst(int, const std::string& text) {
  m_messages.push_back(text);
  if (m_messageSink) m_messageSink(text);
}

int StandaloneHost::DspMessageBox(std::uint16_t, void*, const std::string& text) {
  dsplst(0, text);
  return 0;
}

void StandaloneHost::DisplayInstError(const ModuleInstance& instance, void*, int textId) {
  dsplst(0, instance.LoadText(textId));
}

int StandaloneHost::pcancel() {
  return WasInterrupted() ? 1 : 0;
}

std::unique_ptr<CQvdProgressBar> StandaloneHost::NewProgressBar(int total, const std::string& title) {
  return std::make_unique<TerminalProgress>(m_progress, total, title);
}

int StandaloneHost::AllocMem(void** address, std::size_t size) {
  *address = std::malloc(size > 0 ? size : 1);
  return *address != nullptr ? 0 : 1;
}

void StandaloneHost::FreeMem(void* address) {
  std::free(address);
}

const FormulaNames& StandaloneHost::Names() {
  if (!m_formulaNames) m_formulaNames = FormulaNames::OfTable(m_table);
  return *m_formulaNames;
}

void StandaloneHost::GetVarNamFromTable(CAnalysisNamesArray& names) {
  for (int variable = 1; variable <= m_table.VariableCount(); ++variable) {
    names.InsertNewStr(m_table.Variable(variable).Name);
  }
}

int StandaloneHost::COMP(const char* text, const CAnalysisNamesArray&, CompiledFormulaArea& area) {
  return CompileHostFormula(text, Names(), area);
}

int StandaloneHost::RunSpreadsheetFormula(const double* arguments, const unsigned char* instructions, double& result) {
  return RunHostFormula(arguments, instructions, result);
}

int StandaloneHost::DefaultRowNameWidth() const {
  return kRowNameWidth;
}

void StandaloneHost::looka4(const SheetArguments& sheet) {
  ResultDocument document =
      DocumentFromSheet(sheet, [this](const std::string& text) { return ExpandPossible8CharHash(text); });
  document.Name = m_resultName;
  m_lastDocument = std::make_unique<DocumentView>(m_documents.Add(std::move(document)));
}

HostDocument* StandaloneHost::looka4dlg(const SheetArguments& sheet, void*) {
  if (!m_sheetEditor) return nullptr;
  m_editedSheet = DocumentFromSheet(sheet, [this](const std::string& text) { return ExpandPossible8CharHash(text); });
  if (!m_sheetEditor(std::get<SheetContent>(m_editedSheet.Content))) return nullptr;
  m_editedView = std::make_unique<DocumentView>(m_editedSheet);
  return m_editedView.get();
}

HostDocument* StandaloneHost::LastDocument() {
  return m_lastDocument.get();
}

double StandaloneHost::ChiSquareCdf(double x, double df) {
  return ChiSquareProbability(x, df);
}

double StandaloneHost::NormalQuantile(double probability, double mean, double standardDeviation) {
  return NormalQuantileOf(probability, mean, standardDeviation);
}

}  // namespace orv

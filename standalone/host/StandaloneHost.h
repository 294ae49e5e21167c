// StandaloneHost: everything that the module asks of a host, for a program with a table in memory.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/Host.h"
#include "standalone/documents/NameRegistry.h"
#include "standalone/documents/ResultDocuments.h"
#include "standalone/formula/FormulaNames.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {

class StandaloneHost : public Host {
 public:
  // `table` must outlive the host. Progress is drawn on `progress`, which may be null.
  explicit StandaloneHost(const MemoryTable& table, std::ostream* progress = nullptr);
  ~StandaloneHost() override;

  // Weights the cases by a variable; 0 switches weighting off.
  void SetWeightVariable(int variable);
  bool IsWeighted() const { return m_weights.On; }
  // Cases that lack a value of one of these variables are rejected, as if deselected: for variables that the module
  // reads without testing them. They are counted in RejectedAsMissing.
  void RequireValues(std::vector<int> variables) { m_required = std::move(variables); }
  // Rejects the cases for which the flag is 0; one flag a case, in order. Empty: every case is selected.
  void SelectCases(std::vector<char> isSelected) { m_isSelected = std::move(isSelected); }
  // The name that the next documents get.
  void SetResultName(std::string name) { m_resultName = std::move(name); }
  // What edits a sheet that the module shows in a dialog: it changes cells and returns true, or false to cancel.
  // Without one such a sheet is cancelled at once.
  void SetSheetEditor(std::function<bool(SheetContent&)> editor) { m_sheetEditor = std::move(editor); }
  // Where messages go besides Messages(), one call a message.
  void SetMessageSink(std::function<void(const std::string&)> sink) { m_messageSink = std::move(sink); }

  const ResultDocuments& Documents() const { return m_documents; }
  const std::vector<std::string>& Messages() const { return m_messages; }
  // Rejected cases by required variable, in the order given to RequireValues. A case counts at its first.
  const std::vector<int>& Required() const { return m_required; }
  const std::vector<int>& RejectedAsMissing() const { return m_rejected; }
  const MemoryTable& Table() const { return m_table; }
  // The names that a formula may use, made at the first call.
  const FormulaNames& Names();

  void InitCommons(HostCommons& commons) override;
  int ForwardSequence(int fromStage, int toStage) override;
  bool CreateModelessDialog(const std::string& dialogClass) override;
  void LockResults() override {}
  void UnlockResults() override {}
  bool IsOleAutomation() const override { return false; }
  void SetMessageErrorHandler(int mode) override;

  std::int16_t cstrtw(int caseNumber, double* values, int& hasWeight, double& weight, int& weightVariable) override;
  void getmd5(int variable, double& missingCode) override;
  int GetNbVars() override { return m_table.VariableCount(); }
  const InputTable& GetInputTable() override;
  int GetVarNameEx(std::uint16_t group, int index, std::string& name) override;
  int getlab(unsigned caseNumber, std::string& label) override;
  int vvlcod8(int variable, int value, std::string& label, double& labelledValue) override;
  int vvlcod(int variable, int value, std::string& label, double& labelledValue) override;

  // Any file that ReadTable reads. Throws TableError.
  std::unique_ptr<HostSpreadsheet> OpenSpreadsheet(const std::string& file) override;

  std::string Get8CharHash(const std::string& name) override { return m_names.Get8CharHash(name); }
  std::string ExpandPossible8CharHash(const std::string& text) override { return m_names.Expand(text); }
  // Names of data files carry no formatting marks.
  std::string StripFormatting(const std::string& text) override { return text; }

  void dsplst(int kind, const std::string& text) override;
  int DspMessageBox(std::uint16_t flags, void* parent, const std::string& text) override;
  void DisplayInstError(const ModuleInstance& instance, void* parent, int textId) override;
  int pcancel() override;
  bool CancelledExternally() override { return false; }
  std::unique_ptr<CQvdProgressBar> NewProgressBar(int total, const std::string& title) override;
  // A status line of the desktop suite; the progress bar says all of it here.
  void d_pbar(const std::string&) override {}
  void d_stat(const std::string&) override {}
  void writst(const std::string&) override {}
  void cupst(const std::string&) override {}

  int AllocMem(void** address, std::size_t size) override;
  int GetMem(void** address, std::size_t size) override { return AllocMem(address, size); }
  void FreeMem(void* address) override;

  void GetVarNamFromTable(CAnalysisNamesArray& names) override;
  // Formulas may name the texts and dates of the table, so its variables count, whatever `names` holds.
  int COMP(const char* text, const CAnalysisNamesArray& names, CompiledFormulaArea& area) override;
  int RunSpreadsheetFormula(const double* arguments, const unsigned char* instructions, double& result) override;

  bool OutputSwitchedOff() const override { return false; }
  int DefaultRowNameWidth() const override;
  void looka4(const SheetArguments& sheet) override;
  HostDocument* looka4dlg(const SheetArguments& sheet, void* parent) override;
  HostDocument* LastDocument() override;

  double ChiSquareCdf(double x, double df) override;
  double NormalQuantile(double probability, double mean, double standardDeviation) override;

 private:
  class TableView;
  class DocumentView;

  bool LacksRequiredValue(int caseNumber);

  const MemoryTable& m_table;
  std::ostream* m_progress;
  std::unique_ptr<TableView> m_inputTable;
  std::unique_ptr<DocumentView> m_lastDocument;
  std::function<bool(SheetContent&)> m_sheetEditor;
  ResultDocument m_editedSheet;  // of the latest dialog
  std::unique_ptr<DocumentView> m_editedView;
  std::vector<const double*> m_columns;  // the values of each variable, from 0
  WeightRecord m_weights;
  std::vector<int> m_required;
  std::vector<int> m_rejected;
  std::vector<char> m_isSelected;
  std::optional<FormulaNames> m_formulaNames;
  NameRegistry m_names;
  ResultDocuments m_documents;
  std::string m_resultName;
  std::vector<std::string> m_messages;
  std::function<void(const std::string&)> m_messageSink;
};

}  // namespace orv

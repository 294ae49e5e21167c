// Host: every operation that the module asks of the program it runs in, as one abstract class.
//
// The module computes; the host owns the input table, the result documents, the messages and the progress bars. A
// stand-alone host needs a table, a place for messages and result sheets, and a cancel flag. Operations keep the
// host's short names. All calls come from one thread.
//
// Variable numbers count from 1, case numbers from 1. An error of the host itself (a document that cannot be made)
// is reported by an exception, which no code of the module catches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orv {

struct ModuleInstance;

// The host's record of case weights. `cstrtw` refreshes `Weight` for the case that it fetches.
struct WeightRecord {
  bool On = false;      // weighting is switched on
  int Variable = 0;     // number of the weight variable, 0 when none
  double Weight = 1.0;  // weight of the case fetched last
};

// Records that the host shares with an analysis. Bound by `InitCommons`; owned by the host.
struct HostCommons {
  const WeightRecord* Weights = nullptr;
};

// The table that is analysed, as far as the module asks for it beyond single cases.
class InputTable {
 public:
  virtual ~InputTable() = default;
  virtual int CaseCount() const = 0;
  // The text label of a value of a variable, empty when it has none.
  virtual std::string ValueLabel(int variable, double value) const = 0;
};

// A progress bar. Destroying it takes it off the screen.
class CQvdProgressBar {
 public:
  virtual ~CQvdProgressBar() = default;
  virtual void ShowNow() = 0;
  // Moves the bar. Returns true when the user has asked to cancel.
  virtual bool ProgressBarUpdate(int position) = 0;
};

// A result document after the host has taken it over.
class HostDocument {
 public:
  virtual ~HostDocument() = default;
  virtual void SetCustomProperty(const std::string& name, const std::string& text) = 0;
  // A cell of a sheet as the user left it. Rows and columns count from 0. Empty when the cell is missing or of the
  // other kind.
  virtual std::optional<double> NumberAt(int row, int column) const = 0;
  virtual std::optional<std::string> TextAt(int row, int column) const = 0;
};

// A spreadsheet file that the host has opened for reading. Cases and columns count from 1.
class HostSpreadsheet {
 public:
  virtual ~HostSpreadsheet() = default;
  virtual int ColumnCount() const = 0;
  virtual int CaseCount() const = 0;
  // What a cell shows, numbers with all their digits; empty when it is missing.
  virtual std::string CellText(int caseNumber, int column) const = 0;
};

// A finished result sheet, as `looka4` receives it. All arrays belong to the caller and end with the call.
// Fields of fixed width are padded with zero bytes and carry no terminator when they are full.
struct SheetArguments {
  int RowCount = 0;
  int ColumnCount = 0;
  int NumberWidth = 16;     // number format: characters
  int NumberDecimals = 6;   // number format: decimals
  int RowNameWidth = 0;     // bytes of one field of RowNames
  int ColumnNameWidth = 0;  // bytes of one field of TextCells, ColumnNames and ColumnLongNames
  int TitleWidth = 80;      // bytes of a title
  int SheetStyle = 0;
  int TitleStyle = 0;
  const double* Cells = nullptr;                // column * RowCount + row; all bytes 0xFF where missing
  const char* TextCells = nullptr;              // the same order, one field a cell
  const unsigned char* ColumnIsText = nullptr;  // 156 for a column of texts
  const char* ColumnNames = nullptr;
  const char* ColumnLongNames = nullptr;
  const char* RowNames = nullptr;
  const unsigned char* HighlightBits = nullptr;  // 16-byte head, then one bit a cell, lowest bit first
  const char* Title1 = nullptr;
  const char* Title2 = nullptr;
  const char* Title3 = nullptr;
  const char* ShortName = nullptr;  // 12 bytes: the name of the corner cell
};

// The names that a formula may use. Numbers count from 1; a name inserted after those of the table follows them.
class CAnalysisNamesArray {
 public:
  // Returns the number of the name.
  int InsertNewStr(std::string name) {
    m_names.push_back(std::move(name));
    return static_cast<int>(m_names.size());
  }
  int Count() const { return static_cast<int>(m_names.size()); }
  const std::string& Name(int number) const { return m_names[static_cast<std::size_t>(number) - 1]; }

 private:
  std::vector<std::string> m_names;
};

// What the formula compiler fills. The arrays belong to the caller.
struct CompiledFormulaArea {
  unsigned char* Instructions = nullptr;
  int InstructionBytes = 0;         // their room
  std::int16_t* Symbols = nullptr;  // numbers of the names that the formula reads, in order of first appearance
  int SymbolRoom = 0;               // at most that many are written
  int SymbolCount = 0;              // that many there are
  int ErrorPosition = 0;            // above 0: the place of an error in the text, from 1
};

class Host {
 public:
  virtual ~Host() = default;

  // ---- The analysis -------------------------------------------------------------------------------------------
  virtual void InitCommons(HostCommons& commons) = 0;
  // Called when an analysis asks to move between its stages.
  virtual int ForwardSequence(int fromStage, int toStage) = 0;
  // Creates a modeless dialog by the name of its class. Returns false when it cannot be created.
  virtual bool CreateModelessDialog(const std::string& dialogClass) = 0;
  virtual void LockResults() = 0;
  virtual void UnlockResults() = 0;
  virtual bool IsOleAutomation() const = 0;
  virtual void SetMessageErrorHandler(int mode) = 0;

  // ---- The input table ----------------------------------------------------------------------------------------
  // Fetches one case. `values` has GetNbVars() + 1 elements: element 0 receives the case number, element v the value
  // of variable v. Returns 0 for a case that the selection conditions keep, 1 or 2 for one that they reject.
  virtual std::int16_t cstrtw(int caseNumber, double* values, int& hasWeight, double& weight, int& weightVariable) = 0;
  // The missing-data code of a variable: a value equal to it up to rounding is missing.
  virtual void getmd5(int variable, double& missingCode) = 0;
  virtual int GetNbVars() = 0;
  virtual const InputTable& GetInputTable() = 0;
  // `group` is always 1; `index` counts from 0. Returns 0 on success.
  virtual int GetVarNameEx(std::uint16_t group, int index, std::string& name) = 0;
  // The name of a case. Returns 0 on success.
  virtual int getlab(unsigned caseNumber, std::string& label) = 0;
  // Translation between a value of a variable and its label. Returns 0 when the value has one.
  virtual int vvlcod8(int variable, int value, std::string& label, double& labelledValue) = 0;
  virtual int vvlcod(int variable, int value, std::string& label, double& labelledValue) = 0;

  // Opens a spreadsheet file besides the input table. Never null: a file that cannot be read is an error of the host.
  virtual std::unique_ptr<HostSpreadsheet> OpenSpreadsheet(const std::string& file) = 0;

  // ---- Names --------------------------------------------------------------------------------------------------
  // A key of 8 characters for a name that does not fit its field; the host remembers what it stands for.
  virtual std::string Get8CharHash(const std::string& name) = 0;
  // The name that a key stands for; any other text comes back as it is.
  virtual std::string ExpandPossible8CharHash(const std::string& text) = 0;
  // The text without the host's formatting marks.
  virtual std::string StripFormatting(const std::string& text) = 0;

  // ---- Messages and progress ----------------------------------------------------------------------------------
  // Shows a message and returns when it has been seen. `kind` is always 0.
  virtual void dsplst(int kind, const std::string& text) = 0;
  virtual int DspMessageBox(std::uint16_t flags, void* parent, const std::string& text) = 0;
  virtual void DisplayInstError(const ModuleInstance& instance, void* parent, int textId) = 0;
  virtual int pcancel() = 0;               // non-zero when the user has cancelled
  virtual bool CancelledExternally() = 0;  // the host itself asks the analysis to stop
  virtual std::unique_ptr<CQvdProgressBar> NewProgressBar(int total, const std::string& title) = 0;
  virtual void d_pbar(const std::string& text) = 0;
  virtual void d_stat(const std::string& text) = 0;
  virtual void writst(const std::string& text) = 0;
  virtual void cupst(const std::string& text) = 0;

  // ---- Memory -------------------------------------------------------------------------------------------------
  // Both return 0 and a usable block, aligned for any number, or another value and no block when memory is out.
  virtual int AllocMem(void** address, std::size_t size) = 0;
  virtual int GetMem(void** address, std::size_t size) = 0;
  virtual void FreeMem(void* address) = 0;

  // ---- Formulas -----------------------------------------------------------------------------------------------
  // The names of all variables of the input table, in order.
  virtual void GetVarNamFromTable(CAnalysisNamesArray& names) = 0;
  // Compiles a formula. `text` is one byte with the length of the formula plus 1, then the formula in upper case, then
  // ";" and a zero byte. Names match without regard to case. Returns 0, or 5 when memory is out.
  virtual int COMP(const char* text, const CAnalysisNamesArray& names, CompiledFormulaArea& area) = 0;
  // Evaluates a compiled formula. `arguments` has one value per symbol, in the order of the symbols. Returns 0 on
  // success, another value when a number cannot be computed.
  virtual int RunSpreadsheetFormula(const double* arguments, const unsigned char* instructions, double& result) = 0;

  // ---- Results ------------------------------------------------------------------------------------------------
  virtual bool OutputSwitchedOff() const = 0;
  virtual int DefaultRowNameWidth() const = 0;
  // Takes a finished sheet over.
  virtual void looka4(const SheetArguments& sheet) = 0;
  // The same for a sheet that the user edits; the document stays the host's. Null when the user cancelled.
  virtual HostDocument* looka4dlg(const SheetArguments& sheet, void* parent) = 0;
  // The document that the last `looka4` made, null when it made none. Owned by the host.
  virtual HostDocument* LastDocument() = 0;

  // ---- Distributions ------------------------------------------------------------------------------------------
  // P(X <= x) of a chi-square variable with df > 0 degrees of freedom.
  virtual double ChiSquareCdf(double x, double df) = 0;
  // The quantile of a normal variable. Every caller passes mean 0 and standard deviation 1.
  virtual double NormalQuantile(double probability, double mean, double standardDeviation) = 0;
};

}  // namespace orv

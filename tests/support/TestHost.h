// The stand-alone host, with a record of what the module asked of it and faults that a test can order.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "standalone/host/StandaloneHost.h"

namespace orv::testing {

// A copy of the arrays that one looka4 received, byte for byte.
struct RawSheet {
  SheetArguments Fixed;  // its pointers are null
  std::vector<double> Cells;
  std::string TextCells;
  std::vector<unsigned char> ColumnIsText;
  std::string ColumnNames;
  std::string ColumnLongNames;
  std::string RowNames;
  std::vector<unsigned char> HighlightBits;
  std::string Title1;
  std::string Title2;
  std::string Title3;
  std::string ShortName;

  std::size_t Index(int row, int column) const {
    return static_cast<std::size_t>(column) * static_cast<std::size_t>(Fixed.RowCount) + static_cast<std::size_t>(row);
  }
  // All bytes 0xFF: the mark of a cell that was never written.
  bool IsUnwritten(int row, int column) const {
    unsigned char bytes[sizeof(double)];
    std::memcpy(bytes, &Cells.at(Index(row, column)), sizeof bytes);
    for (const unsigned char byte : bytes) {
      if (byte != 0xFF) return false;
    }
    return true;
  }
  bool IsHighlighted(int row, int column) const {
    const std::size_t bit = Index(row, column);
    return ((HighlightBits.at(16 + bit / 8) >> (bit % 8)) & 1U) != 0;
  }
};

// What became of one progress bar.
struct BarRecord {
  int Total = 0;
  std::string Title;
  bool Shown = false;
  bool Open = true;
  std::vector<int> Positions;
};

class TestHost : public StandaloneHost {
 public:
  explicit TestHost(const MemoryTable& table) : StandaloneHost(table) {}
  ~TestHost() override {
    for (void* block : m_live) std::free(block);
  }

  // Makes the allocation of this number fail, counted from 1 and from this call on; 0 lets all succeed.
  void FailAllocation(int number) {
    m_failing = number;
    m_requests = 0;
  }
  int Requests() const { return m_requests; }
  int LiveBlocks() const { return static_cast<int>(m_live.size()); }

  // A bar answers yes to its cancel query once it stands at this position or beyond; 0 never.
  int CancelBarAt = 0;
  bool Cancelled = false;  // the answer of pcancel
  bool External = false;   // and of CancelledExternally
  bool Automation = false;
  bool Switched = false;       // output is switched off
  bool KeepsDocuments = true;  // false: LastDocument is null
  int RowNameWidth = 40;
  std::function<void(int)> OnBarMove;  // called with each position

  std::vector<BarRecord> Bars;
  std::vector<RawSheet> Sheets;
  std::vector<RawSheet> DialogSheets;  // as they were shown, before anyone edited them
  void* DialogParent = nullptr;        // of the last of them
  std::vector<int> ErrorHandlerModes;
  // Messages, closed bars and error handler calls in the order in which they came.
  std::vector<std::string> Events;
  // Everything that shows, in full: "lock", "unlock", "open 10 Reading data", "show", "move 3", "close",
  // "dsplst 0: text", "box 0: text", "instance text 10025", "dialog CDefineTask", "forward 101 102".
  std::vector<std::string> Trace;
  void* BoxParent = nullptr;                         // of the last DspMessageBox
  std::vector<std::size_t> AllocationSizes;          // of every AllocMem, in bytes
  std::map<int, double> MissingCodes;                // by variable, instead of the table's
  std::map<int, std::int16_t> CaseResults;           // what cstrtw returns, by case number
  int CaseFetches = 0;                               // calls of cstrtw
  std::set<std::string> Dialogs;                     // classes of dialogs that can be created
  int ForwardAnswer = 0;                             // what ForwardSequence returns
  std::function<bool(const std::string&)> OnDialog;  // runs a dialog; Dialogs counts when it is empty

  bool IsOleAutomation() const override { return Automation; }
  void SetMessageErrorHandler(int mode) override {
    ErrorHandlerModes.push_back(mode);
    Events.emplace_back("error handler");
  }
  void dsplst(int kind, const std::string& text) override {
    Events.emplace_back("message");
    if (!m_inBox) Trace.push_back("dsplst " + std::to_string(kind) + ": " + text);
    StandaloneHost::dsplst(kind, text);
  }
  int DspMessageBox(std::uint16_t flags, void* parent, const std::string& text) override {
    Trace.push_back("box " + std::to_string(flags) + ": " + text);
    BoxParent = parent;
    m_inBox = true;
    const int answer = StandaloneHost::DspMessageBox(flags, parent, text);
    m_inBox = false;
    return answer;
  }
  void DisplayInstError(const ModuleInstance& instance, void* parent, int textId) override {
    Trace.push_back("instance text " + std::to_string(textId));
    m_inBox = true;
    StandaloneHost::DisplayInstError(instance, parent, textId);
    m_inBox = false;
  }
  void LockResults() override { Trace.emplace_back("lock"); }
  void UnlockResults() override { Trace.emplace_back("unlock"); }
  bool CreateModelessDialog(const std::string& dialogClass) override {
    Trace.push_back("dialog " + dialogClass);
    return OnDialog ? OnDialog(dialogClass) : Dialogs.count(dialogClass) != 0;
  }
  int ForwardSequence(int fromStage, int toStage) override {
    Trace.push_back("forward " + std::to_string(fromStage) + " " + std::to_string(toStage));
    return ForwardAnswer;
  }
  std::int16_t cstrtw(int caseNumber, double* values, int& hasWeight, double& weight, int& weightVariable) override {
    ++CaseFetches;
    const std::int16_t result = StandaloneHost::cstrtw(caseNumber, values, hasWeight, weight, weightVariable);
    const auto ordered = CaseResults.find(caseNumber);
    return ordered != CaseResults.end() ? ordered->second : result;
  }
  void getmd5(int variable, double& missingCode) override {
    StandaloneHost::getmd5(variable, missingCode);
    const auto ordered = MissingCodes.find(variable);
    if (ordered != MissingCodes.end()) missingCode = ordered->second;
  }
  int pcancel() override { return Cancelled ? 1 : 0; }
  bool CancelledExternally() override { return External; }
  std::unique_ptr<CQvdProgressBar> NewProgressBar(int total, const std::string& title) override {
    Bars.push_back({total, title, false, true, {}});
    Trace.push_back("open " + std::to_string(total) + " " + title);
    return std::make_unique<RecordingBar>(*this, Bars.size() - 1);
  }
  int AllocMem(void** address, std::size_t size) override {
    AllocationSizes.push_back(size);
    if (++m_requests == m_failing) return 1;
    void* block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) return 1;
    // Host memory comes as it is: a routine that counts on zeros must clear it.
    std::memset(block, 0xA5, size);
    m_live.insert(block);
    *address = block;
    return 0;
  }
  int GetMem(void** address, std::size_t size) override { return AllocMem(address, size); }
  void FreeMem(void* address) override {
    if (m_live.erase(address) == 0) {
      ADD_FAILURE() << "FreeMem of a block that is not allocated";
      return;
    }
    std::free(address);
  }
  bool OutputSwitchedOff() const override { return Switched; }
  int DefaultRowNameWidth() const override { return RowNameWidth; }
  void looka4(const SheetArguments& sheet) override {
    Sheets.push_back(Copy(sheet));
    StandaloneHost::looka4(sheet);
  }
  HostDocument* looka4dlg(const SheetArguments& sheet, void* parent) override {
    DialogSheets.push_back(Copy(sheet));
    DialogParent = parent;
    return StandaloneHost::looka4dlg(sheet, parent);
  }
  HostDocument* LastDocument() override { return KeepsDocuments ? StandaloneHost::LastDocument() : nullptr; }

 private:
  class RecordingBar : public CQvdProgressBar {
   public:
    RecordingBar(TestHost& host, std::size_t index) : m_host(host), m_index(index) {}
    ~RecordingBar() override {
      m_host.Bars[m_index].Open = false;
      m_host.Events.emplace_back("bar closed");
      m_host.Trace.emplace_back("close");
    }
    void ShowNow() override {
      m_host.Bars[m_index].Shown = true;
      m_host.Trace.emplace_back("show");
    }
    bool ProgressBarUpdate(int position) override {
      m_host.Bars[m_index].Positions.push_back(position);
      m_host.Trace.push_back("move " + std::to_string(position));
      if (m_host.OnBarMove) m_host.OnBarMove(position);
      return m_host.CancelBarAt > 0 && position >= m_host.CancelBarAt;
    }

   private:
    TestHost& m_host;
    std::size_t m_index;
  };

  static RawSheet Copy(const SheetArguments& sheet) {
    const auto rows = static_cast<std::size_t>(sheet.RowCount);
    const auto columns = static_cast<std::size_t>(sheet.ColumnCount);
    const auto width = static_cast<std::size_t>(sheet.ColumnNameWidth);
    const auto titleWidth = static_cast<std::size_t>(sheet.TitleWidth);
    RawSheet copy;
    copy.Fixed = sheet;
    copy.Cells.assign(sheet.Cells, sheet.Cells + rows * columns);
    copy.TextCells.assign(sheet.TextCells, rows * columns * width);
    copy.ColumnIsText.assign(sheet.ColumnIsText, sheet.ColumnIsText + columns);
    copy.ColumnNames.assign(sheet.ColumnNames, columns * width);
    copy.ColumnLongNames.assign(sheet.ColumnLongNames, columns * width);
    copy.RowNames.assign(sheet.RowNames, rows * static_cast<std::size_t>(sheet.RowNameWidth));
    copy.HighlightBits.assign(sheet.HighlightBits, sheet.HighlightBits + 16 + (rows * columns + 7) / 8);
    copy.Title1.assign(sheet.Title1, titleWidth);
    copy.Title2.assign(sheet.Title2, titleWidth);
    copy.Title3.assign(sheet.Title3, titleWidth);
    copy.ShortName.assign(sheet.ShortName, 12);
    SheetArguments& fixed = copy.Fixed;
    fixed.Cells = nullptr;
    fixed.TextCells = fixed.ColumnNames = fixed.ColumnLongNames = fixed.RowNames = nullptr;
    fixed.ColumnIsText = fixed.HighlightBits = nullptr;
    fixed.Title1 = fixed.Title2 = fixed.Title3 = fixed.ShortName = nullptr;
    return copy;
  }

  std::set<void*> m_live;
  bool m_inBox = false;
  int m_failing = 0;
  int m_requests = 0;
};

}  // namespace orv::testing

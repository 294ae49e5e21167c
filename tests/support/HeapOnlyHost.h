// A host that gives memory and nothing else, for routines that take their working arrays from it.
//
// Every other operation fails the running test and throws. An allocation of a given number can be made to fail, and
// LiveBlocks() tells whether all memory came back.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "host/Host.h"

namespace orv {

class HeapOnlyHost : public Host {
 public:
  ~HeapOnlyHost() override {
    for (void* block : m_live) std::free(block);
  }
  HeapOnlyHost() = default;
  HeapOnlyHost(const HeapOnlyHost&) = delete;
  HeapOnlyHost& operator=(const HeapOnlyHost&) = delete;

  // Makes the allocation of this number fail, counted from 1 and from this call on; 0 lets all succeed.
  void FailAllocation(int number) {
    m_failing = number;
    m_requests = 0;
  }
  int Requests() const { return m_requests; }
  int LiveBlocks() const { return static_cast<int>(m_live.size()); }

  int AllocMem(void** address, std::size_t size) override {
    if (++m_requests == m_failing) return 1;
    void* block = std::malloc(size);
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

  void InitCommons(HostCommons&) override { Unexpected("InitCommons"); }
  int ForwardSequence(int, int) override { Unexpected("ForwardSequence"); }
  bool CreateModelessDialog(const std::string&) override { Unexpected("CreateModelessDialog"); }
  void LockResults() override { Unexpected("LockResults"); }
  void UnlockResults() override { Unexpected("UnlockResults"); }
  bool IsOleAutomation() const override { Unexpected("IsOleAutomation"); }
  void SetMessageErrorHandler(int) override { Unexpected("SetMessageErrorHandler"); }
  std::int16_t cstrtw(int, double*, int&, double&, int&) override { Unexpected("cstrtw"); }
  void getmd5(int, double&) override { Unexpected("getmd5"); }
  int GetNbVars() override { Unexpected("GetNbVars"); }
  const InputTable& GetInputTable() override { Unexpected("GetInputTable"); }
  int GetVarNameEx(std::uint16_t, int, std::string&) override { Unexpected("GetVarNameEx"); }
  int getlab(unsigned, std::string&) override { Unexpected("getlab"); }
  int vvlcod8(int, int, std::string&, double&) override { Unexpected("vvlcod8"); }
  int vvlcod(int, int, std::string&, double&) override { Unexpected("vvlcod"); }
  std::unique_ptr<HostSpreadsheet> OpenSpreadsheet(const std::string&) override { Unexpected("OpenSpreadsheet"); }
  std::string Get8CharHash(const std::string&) override { Unexpected("Get8CharHash"); }
  std::string ExpandPossible8CharHash(const std::string&) override { Unexpected("ExpandPossible8CharHash"); }
  std::string StripFormatting(const std::string&) override { Unexpected("StripFormatting"); }
  void dsplst(int, const std::string&) override { Unexpected("dsplst"); }
  int DspMessageBox(std::uint16_t, void*, const std::string&) override { Unexpected("DspMessageBox"); }
  void DisplayInstError(const ModuleInstance&, void*, int) override { Unexpected("DisplayInstError"); }
  int pcancel() override { Unexpected("pcancel"); }
  bool CancelledExternally() override { Unexpected("CancelledExternally"); }
  std::unique_ptr<CQvdProgressBar> NewProgressBar(int, const std::string&) override { Unexpected("NewProgressBar"); }
  void d_pbar(const std::string&) override { Unexpected("d_pbar"); }
  void d_stat(const std::string&) override { Unexpected("d_stat"); }
  void writst(const std::string&) override { Unexpected("writst"); }
  void cupst(const std::string&) override { Unexpected("cupst"); }
  void GetVarNamFromTable(CAnalysisNamesArray&) override { Unexpected("GetVarNamFromTable"); }
  int COMP(const char*, const CAnalysisNamesArray&, CompiledFormulaArea&) override { Unexpected("COMP"); }
  int RunSpreadsheetFormula(const double*, const unsigned char*, double&) override {
    Unexpected("RunSpreadsheetFormula");
  }
  bool OutputSwitchedOff() const override { Unexpected("OutputSwitchedOff"); }
  int DefaultRowNameWidth() const override { Unexpected("DefaultRowNameWidth"); }
  void looka4(const SheetArguments&) override { Unexpected("looka4"); }
  HostDocument* looka4dlg(const SheetArguments&, void*) override { Unexpected("looka4dlg"); }
  HostDocument* LastDocument() override { Unexpected("LastDocument"); }
  double ChiSquareCdf(double, double) override { Unexpected("ChiSquareCdf"); }
  double NormalQuantile(double, double, double) override { Unexpected("NormalQuantile"); }

 private:
  [[noreturn]] static void Unexpected(const char* operation) {
    ADD_FAILURE() << "the host operation " << operation << " is not expected here";
    throw std::logic_error(operation);
  }

  std::set<void*> m_live;
  int m_failing = 0;
  int m_requests = 0;
};

}  // namespace orv

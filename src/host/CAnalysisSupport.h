// CAnalysisSupport: the base of an analysis. It holds the stage table and forwards to the host.
//
// A host makes an analysis through the module's entry function, attaches itself with AttachHost, and then walks the
// stage table: the function of a stage, then the stage to move forward or back to. An operation of the host may be
// called only after AttachHost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/Host.h"
#include "host/ModuleInstance.h"

namespace orv {

class CAnalysisSupport {
 public:
  using StageFunction = int (CAnalysisSupport::*)();

  struct StageRow {
    int Stage = 0;
    StageFunction Function = nullptr;
    int ForwardTo = 0;  // 0 when the stage has no successor
    int BackTo = 0;     // 0 when there is no way back
  };

  // `document` is the analysis document of the host, or null. Not owned.
  CAnalysisSupport(void* document, std::vector<StageRow> stages);
  virtual ~CAnalysisSupport() = default;
  CAnalysisSupport(const CAnalysisSupport&) = delete;
  CAnalysisSupport& operator=(const CAnalysisSupport&) = delete;

  // Asks the host to move from one stage to another. Returns what the host answers.
  virtual int ForwardSequence(int fromStage, int toStage);
  virtual const ModuleInstance& GetLibInstance() const = 0;
  virtual int GetAnalysisID() const = 0;
  virtual std::string GetAnalysisName() const = 0;
  // Saving options with the host's context: the base saves nothing and reports success.
  virtual int WriteContext(void*) { return 0; }
  virtual int ReadContext(void*) { return 0; }

  // The host that serves this analysis; it must outlive it. Virtual, so that a host that loaded the module at run
  // time needs no symbol of it beyond the entry function.
  virtual void AttachHost(Host& host) { m_pHost = &host; }
  Host& GetHost() const { return *m_pHost; }

  // The row of a stage, null when the table has none.
  const StageRow* FindStage(int stage) const;
  const std::vector<StageRow>& Stages() const { return m_Stages; }
  // Runs the function of a stage and returns its result; -1 when the table has no such stage.
  virtual int RunStage(int stage);

  // A text of the module's string table, empty for an unknown id.
  std::string GetResourceString(int id) const;
  std::string GetResourceStringDirect(int id) const { return GetResourceString(id); }
  // Shows a text of the module's string table by `dsplst`.
  void ShowText(int id) const { dsplst(0, GetResourceString(id)); }
  // True when the user, or the host, has asked for the work to stop.
  bool IsCancelled() const { return pcancel() != 0 || GetHost().CancelledExternally(); }

  // ---- Forwards to the host -----------------------------------------------------------------------------------
  std::int16_t cstrtw(int caseNumber, double* values, int& hasWeight, double& weight, int& weightVariable) const {
    return GetHost().cstrtw(caseNumber, values, hasWeight, weight, weightVariable);
  }
  void getmd5(int variable, double& missingCode) const { GetHost().getmd5(variable, missingCode); }
  int GetNbVars() const { return GetHost().GetNbVars(); }
  const InputTable& GetInputTable() const { return GetHost().GetInputTable(); }
  void dsplst(int kind, const std::string& text) const { GetHost().dsplst(kind, text); }
  int DspMessageBox(std::uint16_t flags, void* parent, const std::string& text) const {
    return GetHost().DspMessageBox(flags, parent, text);
  }
  void DisplayInstError(void* parent, int textId) const {
    GetHost().DisplayInstError(GetLibInstance(), parent, textId);
  }
  int AllocMem(void** address, std::size_t size) const { return GetHost().AllocMem(address, size); }
  void FreeMem(void* address) const { GetHost().FreeMem(address); }
  void LockResults() const { GetHost().LockResults(); }
  void UnlockResults() const { GetHost().UnlockResults(); }
  int pcancel() const { return GetHost().pcancel(); }

  void* m_pDocument = nullptr;  // the host's analysis document; not owned
  HostCommons m_Commons;        // records shared by the host, bound at the first stage

 private:
  Host* m_pHost = nullptr;
  std::vector<StageRow> m_Stages;
};

// Brackets a change of results by LockResults and UnlockResults.
class ResultsLock {
 public:
  explicit ResultsLock(Host& host) : m_host(host) { m_host.LockResults(); }
  ~ResultsLock() { m_host.UnlockResults(); }
  ResultsLock(const ResultsLock&) = delete;
  ResultsLock& operator=(const ResultsLock&) = delete;

 private:
  Host& m_host;
};

}  // namespace orv

#include "core/CCoxPH.h"

#include "core/StringTable.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/TimeExpressions.h"
#include "fit/CCoxFit.h"
#include "host/TextIds.h"

namespace orv {

namespace {

// Dialog classes of the host; the startup dialog comes from template 15012.
constexpr const char* kStartupDialog = "CDefineTask";
constexpr const char* kResultsDialog = "CCoxPHResults";

const ModuleInstance kModule{&LoadModuleText};

std::vector<CAnalysisSupport::StageRow> StageTable() {
  using Function = CAnalysisSupport::StageFunction;
  return {
      {CCoxPH::kInitStage, static_cast<Function>(&CCoxPH::Init), CCoxPH::kStartStage, 0},
      {CCoxPH::kStartStage, static_cast<Function>(&CCoxPH::StartAnalysis), CCoxPH::kResultsStage, 0},
      {CCoxPH::kResultsStage, static_cast<Function>(&CCoxPH::AnalysisResults), 0, CCoxPH::kStartStage},
  };
}

}  // namespace

CCoxPH::CCoxPH(void* document) : CAnalysisSupport(document, StageTable()) {}

// The fit refers to the data, so it is destroyed first.
CCoxPH::~CCoxPH() {
  m_pCoxFit.reset();
}

int CCoxPH::ForwardSequence(int fromStage, int toStage) {
  return CAnalysisSupport::ForwardSequence(fromStage, toStage);
}

const ModuleInstance& CCoxPH::GetLibInstance() const {
  return kModule;
}

std::string CCoxPH::GetAnalysisName() const {
  return GetResourceString(TextIds::AnalysisName);
}

int CCoxPH::Init() {
  GetHost().InitCommons(m_Commons);
  return 1;
}

int CCoxPH::StartAnalysis() {
  return GetHost().CreateModelessDialog(kStartupDialog) ? 0 : -1;
}

int CCoxPH::AnalysisResults() {
  return GetHost().CreateModelessDialog(kResultsDialog) ? 0 : -1;
}

std::string CCoxPH::GetFactorLevel(int variable, int level) const {
  return FactorLevelText(*this, variable, level);
}

void CCoxPH::ReplaceData(std::unique_ptr<CCoxData> data) {
  const bool fitRefersToIt = m_pCoxFit && m_pCoxData && m_pCoxFit->m_pData == m_pCoxData.get();
  if (fitRefersToIt) m_pReplacedData = std::move(m_pCoxData);
  m_pCoxData = std::move(data);
}

void CCoxPH::ReplaceFit(std::unique_ptr<CCoxFit> fit) {
  m_pCoxFit = std::move(fit);
  m_pReplacedData.reset();
}

void CCoxPH::ReleaseRunObjects() {
  m_pCoxData.reset();
  ReplaceFit(nullptr);
}

}  // namespace orv

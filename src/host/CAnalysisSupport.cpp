#include "host/CAnalysisSupport.h"

#include <utility>

namespace orv {

CAnalysisSupport::CAnalysisSupport(void* document, std::vector<StageRow> stages)
    : m_pDocument(document), m_Stages(std::move(stages)) {}

int CAnalysisSupport::ForwardSequence(int fromStage, int toStage) {
  return GetHost().ForwardSequence(fromStage, toStage);
}

const CAnalysisSupport::StageRow* CAnalysisSupport::FindStage(int stage) const {
  for (const StageRow& row : m_Stages) {
    if (row.Stage == stage) return &row;
  }
  return nullptr;
}

int CAnalysisSupport::RunStage(int stage) {
  const StageRow* row = FindStage(stage);
  return row != nullptr ? (this->*row->Function)() : -1;
}

std::string CAnalysisSupport::GetResourceString(int id) const {
  return GetLibInstance().LoadText(id);
}

}  // namespace orv

// Operations on the options that dialogs and scripts call.
#include <algorithm>
#include <string_view>

#include "core/CCoxPH.h"

namespace orv {

void CCoxPH::ResetOptions() {
  ResetSettings(m_Settings);
  m_isReduced = false;
}

void CCoxPH::BackupFullModelData() {
  // What a selection has left is not the full model.
  if (m_isReduced) return;
  CoxSettings& s = m_Settings;
  s.BackupCovariateVariables = s.CovariateVariables;
  s.BackupCovariateCount = s.CovariateCount;
  s.BackupFactorVariables = s.FactorVariables;
  s.BackupFactorCount = s.FactorCount;
  s.BackupReferenceCodeIndex = s.ReferenceCodeIndex;
  s.BackupReferenceCodes = s.ReferenceCodes;
  s.BackupFactorCodeCounts = s.FactorCodeCounts;
  s.BackupFactorCodes = s.FactorCodes;
  s.BackupDesignEffects = s.DesignEffects;
  s.BackupEffectSymbols = s.EffectSymbols;
  m_fullStartValues = s.StartValues;
  m_fullFixedFlags = s.FixedParameterFlags;
}

void CCoxPH::RestoreFullModelData() {
  if (!m_isReduced) return;
  CoxSettings& s = m_Settings;
  s.CovariateVariables = s.BackupCovariateVariables;
  s.CovariateCount = s.BackupCovariateCount;
  s.FactorVariables = s.BackupFactorVariables;
  s.FactorCount = s.BackupFactorCount;
  s.ReferenceCodeIndex = s.BackupReferenceCodeIndex;
  s.ReferenceCodes = s.BackupReferenceCodes;
  s.FactorCodeCounts = s.BackupFactorCodeCounts;
  s.FactorCodes = s.BackupFactorCodes;
  s.DesignEffects = s.BackupDesignEffects;
  s.EffectSymbols = s.BackupEffectSymbols;
  s.StartValues = m_fullStartValues;
  s.FixedParameterFlags = m_fullFixedFlags;
  m_isReduced = false;
}

int CCoxPH::ReadData() {
  std::vector<int> variables;  // from 0
  for (const std::int16_t variable : m_Settings.FactorVariables) variables.push_back(variable - 1);
  for (const std::int16_t variable : m_Settings.CovariateVariables) variables.push_back(variable - 1);
  if (m_Commons.Weights != nullptr && m_Commons.Weights->On) variables.push_back(m_Commons.Weights->Variable - 1);
  return 0;
}

int CCoxPH::SplitStrings(std::vector<std::string>* pieces, const std::string* text, const std::string* delimiters) {
  if (pieces == nullptr || text == nullptr || delimiters == nullptr || text->empty()) return -1;
  pieces->clear();
  std::string_view rest = *text;
  while (!rest.empty()) {
    const std::size_t end = rest.find_first_of(*delimiters);
    std::string_view piece = rest.substr(0, end);
    piece.remove_prefix(std::min(piece.find_first_not_of(' '), piece.size()));
    if (!piece.empty()) pieces->emplace_back(piece);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  return static_cast<int>(pieces->size());
}

}  // namespace orv

#include "select/ReduceDesign.h"

#include <algorithm>
#include <set>
#include <string>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "select/EffectColumns.h"

namespace orv {

namespace {

// Those elements of a list for which a flag stands.
template <typename List>
void KeepFlagged(List& list, const std::vector<bool>& kept) {
  List left;
  for (std::size_t k = 0; k < list.size(); ++k) {
    // What stands beyond the flags belongs to no part of the design.
    if (k >= kept.size() || kept[k]) left.push_back(list[k]);
  }
  list = left;
}

class Reduction {
 public:
  Reduction(CCoxFit& fit, const std::vector<int>& effects)
      : m_fit(fit), m_data(*fit.m_pData), m_settings(fit.Owner().m_Settings), m_columnsBefore(m_data.CoefficientCount) {
    std::sort(m_fit.m_ActiveColumns.begin(), m_fit.m_ActiveColumns.end());
    m_fit.m_KeptColumns = m_fit.m_ActiveColumns;
    m_columnKept.assign(m_columnsBefore, false);
    for (const int column : m_fit.m_KeptColumns) m_columnKept[static_cast<std::size_t>(column)] = true;
    m_effectKept.assign(m_data.EffectCount, false);
    for (const int effect : effects) {
      // A search that ran out of memory may have listed an effect and not taken it in.
      const int first = ColumnsOfEffect(m_data, effect).First;
      const bool isInModel = std::binary_search(m_fit.m_KeptColumns.begin(), m_fit.m_KeptColumns.end(), first);
      m_effectKept[static_cast<std::size_t>(effect - 1)] = isInModel;
    }
  }

  void Reduce() {
    CutTable();
    CutEffects();
    KeepFlagged(m_data.DesignColumns, m_columnKept);
    for (CoxDesignColumn& column : m_data.DesignColumns) column.Dropped = false;
    ShiftColumns();
    KeepFlagged(m_settings.StartValues, m_columnKept);
    FindVariablesInUse();
    CutFactors();
    CutCovariates();
  }

 private:
  std::uint32_t KeptCount() const { return static_cast<std::uint32_t>(m_fit.m_KeptColumns.size()); }

  void CutTable() {
    std::string columns;
    const auto list = [&columns](std::size_t column) {
      columns += (columns.empty() ? "" : " ") + std::to_string(column + 1);
    };
    for (const int column : m_fit.m_KeptColumns) list(static_cast<std::size_t>(column));
    for (std::size_t column = m_columnsBefore; column < m_data.ColumnCount; ++column) list(column);
    m_data.CaseTable = std::move(m_data.CaseTable).Subset(columns, "");
  }

  void CutEffects() {
    for (std::size_t effect = 0; effect < m_effectKept.size(); ++effect) {
      if (!m_effectKept[effect]) m_settings.EffectSymbols.erase(m_settings.DesignEffects[effect]);
    }
    // The flags of parameters held are numbered by effect.
    KeepFlagged(m_settings.FixedParameterFlags, m_effectKept);
    KeepFlagged(m_settings.DesignEffects, m_effectKept);
    KeepFlagged(m_data.EffectFixed, m_effectKept);
    NumberEffects();
    m_data.EffectInModel.assign(m_data.EffectCount, true);
  }

  // The column ranges of the effects that are left, in design order and without gaps.
  void NumberEffects() {
    std::vector<std::int32_t> first;
    std::vector<std::int32_t> last;
    std::int32_t columns = 0;
    for (std::size_t effect = 0; effect < m_effectKept.size(); ++effect) {
      if (!m_effectKept[effect]) continue;
      const std::int32_t count = m_data.EffectLastColumn[effect] - m_data.EffectFirstColumn[effect] + 1;
      first.push_back(columns + 1);
      columns += count;
      last.push_back(columns);
    }
    m_data.EffectFirstColumn = first;
    m_data.EffectLastColumn = last;
    m_data.EffectCount = static_cast<std::uint32_t>(first.size());
  }

  void ShiftColumns() {
    const std::uint32_t removed = m_columnsBefore - KeptCount();
    m_data.ColumnCount -= removed;
    m_data.DesignColumnCount = KeptCount();
    m_data.CoefficientCount = KeptCount();
    m_fit.m_ActiveCount = static_cast<int>(KeptCount());
    for (std::int32_t* column :
         {&m_data.SurvivalColumn, &m_data.StartColumn, &m_data.StopColumn, &m_data.EntryTimeColumn,
          &m_data.StratumColumn, &m_data.WeightColumn, &m_data.CaseNumberColumn, &m_data.StatusColumn,
          &m_data.ExcludedColumn, &m_data.SubjectColumn}) {
      if (*column >= 0) *column -= static_cast<std::int32_t>(removed);
    }
  }

  void FindVariablesInUse() {
    m_settings.DesignFactorSet.clear();
    for (std::size_t c = 0; c < m_data.CoefficientCount; ++c) {
      const CoxDesignColumn& column = m_data.DesignColumns[c];
      for (std::size_t k = 0; k < column.Variables.size(); ++k) {
        m_settings.DesignFactorSet.emplace(column.Variables[k], column.VariableRoles[k]);
        m_inUse.emplace(column.Variables[k], column.VariableRoles[k]);
      }
    }
  }

  std::vector<bool> FlagsInUse(const std::vector<std::int16_t>& variables, std::int32_t role) const {
    std::vector<bool> flags;
    for (const std::int16_t variable : variables) flags.push_back(m_inUse.count({variable, role}) != 0);
    return flags;
  }

  void CutFactors() {
    const std::vector<bool> kept = FlagsInUse(m_settings.FactorVariables, VariableRole::Factor);
    std::vector<bool> codesKept;
    for (std::size_t factor = 0; factor < kept.size(); ++factor) {
      codesKept.insert(codesKept.end(), static_cast<std::size_t>(m_settings.FactorCodeCounts[factor]), kept[factor]);
    }
    KeepFlagged(m_settings.FactorCodes, codesKept);
    KeepFlagged(m_settings.FactorCodeCounts, kept);
    KeepFlagged(m_settings.ReferenceCodes, kept);
    KeepFlagged(m_settings.ReferenceCodeIndex, kept);
    KeepFlagged(m_settings.FactorVariables, kept);
    KeepFlagged(m_data.FactorModalCodes, kept);
    KeepFlagged(m_data.FactorLevelWeights, kept);
    m_settings.FactorCount = static_cast<std::int16_t>(m_settings.FactorVariables.size());
  }

  void CutCovariates() {
    const std::vector<bool> kept = FlagsInUse(m_settings.CovariateVariables, VariableRole::Covariate);
    KeepFlagged(m_settings.CovariateVariables, kept);
    KeepFlagged(m_data.CovariateMeans, kept);
    KeepFlagged(m_data.CovariateWeights, kept);
    m_settings.CovariateCount = static_cast<std::int16_t>(m_settings.CovariateVariables.size());
  }

  CCoxFit& m_fit;
  CCoxData& m_data;
  CoxSettings& m_settings;
  const std::uint32_t m_columnsBefore;
  std::vector<bool> m_effectKept;                           // per effect of the full design
  std::vector<bool> m_columnKept;                           // per design column of the full design
  std::set<std::pair<std::int32_t, std::int32_t>> m_inUse;  // variables of the columns left, with their roles
};

}  // namespace

void ReduceDesign(CCoxFit& fit, const std::vector<int>& effects) {
  Reduction(fit, effects).Reduce();
}

}  // namespace orv

// CoxDesignColumn: one column of the design, with its term, levels and running statistics.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orv {

// What a variable of a term is. Stored as integers, because tests of the term compare them so.
namespace VariableRole {
inline constexpr std::int32_t Factor = 1;
inline constexpr std::int32_t Covariate = 0;
inline constexpr std::int32_t TimeExpression = -1;
}  // namespace VariableRole

struct CoxDesignColumn {
  std::int32_t VariableCount = 0;           // variables in the term
  std::vector<std::int32_t> Variables;      // their numbers, from 1
  std::vector<std::int32_t> VariableRoles;  // per variable; per expression after them
  std::vector<std::int32_t> LevelIndex;     // per variable: the level this column stands for, from 1
  std::int32_t ColumnInEffect = 0;          // place within the effect, from 1
  double Mean = 0.0;                        // unweighted
  double Variance = 0.0;                    // denominator n - 1; the running sum of squares while reading
  double StdDev = 0.0;                      // 0 with fewer than two values
  std::int32_t Count = 0;                   // values that entered the three above
  double WeightedMean = 0.0;                // by case weight
  double WeightedVariance = 0.0;            // denominator weight sum - 1; the running sum while reading
  double WeightedStdDev = 0.0;
  double WeightSum = 0.0;
  std::string EffectName;                   // the effect as the user sees it
  std::string EffectTerm;                   // its symbolic term
  bool Dropped = false;                     // took no part in the last factorisation: aliased, constant or held fixed
  bool Fixed = false;                       // coefficient held at its start value
  std::vector<std::int32_t> ExpressionIds;  // time expressions of the term, from 1
  std::int32_t ExpressionCount = 0;

  bool HasFactor() const;
  // Takes a value with its weight into the running statistics (West, 1979: updating mean and variance estimates).
  void AddValue(double value, double weight);
  // Turns the running sums of squares into variances and standard deviations.
  void FinishStatistics();
};

// True when neighbouring columns of the range all have the same Fixed mark.
bool ColumnsAgreeOnFixed(std::vector<CoxDesignColumn>::const_iterator first,
                         std::vector<CoxDesignColumn>::const_iterator last);

}  // namespace orv

// CCoxData: the cases and the design of one run.
//
// It is filled in two steps, BuildDesign and then ReadCases, and is read-only afterwards but for the Dropped and Fixed
// marks of the design columns and EffectInModel. After ReadCases the rows of CaseTable are the kept cases, sorted by
// stratum, then time ascending, then complete before censored; every weight is positive; the record of DesignColumns
// at index c describes column c of a row, for the design columns and for the time columns that follow them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "data/CaseTable.h"
#include "data/CoxDesignColumn.h"
#include "data/ExclusionCounts.h"

namespace orv {

class CCoxPH;

class CCoxData {
 public:
  // `owner` must outlive the data. It needs an attached host.
  explicit CCoxData(CCoxPH* owner);
  CCoxData(const CCoxData&) = delete;
  CCoxData& operator=(const CCoxData&) = delete;

  // Expands the effects of the options into design columns and lays CaseTable out. Shows nothing; leaves the build
  // early, with FixedFlagConflict set, when the columns of one effect disagree on Fixed.
  void BuildDesign(int inputType);
  // Reads the input table into CaseTable: excludes, evaluates the design, gathers statistics, sorts. Returns 0, or 1
  // after a message, or 1 silently when the user cancelled.
  int ReadCases(void* parent);
  // Reads one case, once the design is built. `values` is the input row (element 0 the case number), `outputRow` the
  // row of CaseTable from 1.
  Exclusion ReadCase(const double* values, int outputRow, double weight);
  // 1 when a tested variable of the input row is missing, else 0. What is tested, and that only the first of several
  // survival variables is, has been so in every release.
  int CheckMissing(const double* values) const;
  // The value of the stratum column equals one of the selected codes.
  bool IsSelectedStratum(double value) const;

  CCoxPH* Owner = nullptr;
  orv::CaseTable CaseTable;
  std::uint32_t DesignColumnCount = 0;  // design columns built
  std::uint32_t CaseCount = 0;          // cases of the input table while reading, kept cases afterwards
  std::uint32_t CoefficientCount = 0;   // coefficients of the full model
  std::uint32_t ValidCaseCount = 0;     // cases kept
  std::uint32_t EffectCount = 0;        // effects of the design
  std::uint32_t ColumnCount = 0;        // columns of CaseTable
  std::uint32_t CensoredCaseCount = 0;  // kept cases by status
  std::uint32_t CompleteCaseCount = 0;
  std::uint32_t TimeVariableCount = 0;         // columns for the variables of time expressions
  bool FixedFlagConflict = false;              // columns of one effect disagree on Fixed
  std::map<double, double> CompleteByStratum;  // stratum value to number of complete cases, unweighted
  std::map<double, double> CensoredByStratum;
  std::map<double, double> CasesByStratum;
  std::map<double, int> SubjectIds;  // subject value to dense id, from 0 in order of first appearance
  std::int32_t NextSubjectId = 0;

  // Columns of a row, from 0; -1 when there is none.
  std::int32_t SurvivalColumn = -1;
  std::int32_t StartColumn = -1;
  std::int32_t StopColumn = -1;
  std::int32_t EntryTimeColumn = -1;
  std::int32_t StratumColumn = -1;
  std::int32_t WeightColumn = -1;
  std::int32_t CaseNumberColumn = -1;
  std::int32_t StatusColumn = -1;    // 1.0 complete, 0.0 censored
  std::int32_t ExcludedColumn = -1;  // while reading: 1.0 for a case that is left out
  std::int32_t TimeVariableColumn = -1;
  std::int32_t SubjectColumn = -1;

  std::vector<CoxDesignColumn> DesignColumns;   // design columns, then the records of time and subject variables
  std::vector<std::int32_t> EffectFirstColumn;  // per effect, from 1
  std::vector<std::int32_t> EffectLastColumn;
  std::vector<bool> EffectInModel;                           // per effect: in the current model
  std::vector<bool> EffectFixed;                             // per effect: held at its start values
  std::vector<double> CovariateMeans;                        // running weighted means of the raw covariates
  std::vector<double> CovariateWeights;                      // and their weight sums
  std::vector<double> FactorModalCodes;                      // most frequent code of each factor, by weight
  std::vector<std::map<double, double>> FactorLevelWeights;  // per factor: code to weight sum
  std::uint32_t FixedEffectCount = 0;
  ExclusionCounts Excluded;

 private:
  // What a pass over the cases looks up for every case, gathered once before it.
  struct MissingTest {
    int Variable = 0;
    double Code = 0.0;
    bool Strict = false;
  };

  void AddEffect(std::size_t effect, bool timeDependent);
  void AddOneColumnEffect(CoxDesignColumn record, std::size_t effect);
  void AddFactorEffect(const CoxDesignColumn& record, std::size_t effect, bool timeDependent);
  void AddTimeColumns(int inputType);
  std::int32_t AddColumn() { return static_cast<std::int32_t>(ColumnCount++); }
  std::int32_t AddRecordedColumn(std::string_view name, std::int32_t variable);

  void PrepareReading();
  void CountMissingVariables(const double* values);
  bool CaseTime(const double* values, double& time, double& stop) const;
  bool FindFactorLevels(const double* values);
  void WriteTimes(double* row, double time, double stop, double entry, double weight);
  void CountStratum(double stratum, double status);
  void EvaluateDesign(const double* values, double* row, double weight);

  bool ReadAllCases(bool& cancelled);
  void KeepValidCases();
  void SortCases();
  // The message for strata that cannot be fitted, empty when all can.
  std::string StrataProblem() const;
  void FindModalCodes();

  std::vector<MissingTest> m_MissingTests;
  std::vector<double> m_ExpressionCodes;     // missing codes of TimeExpressionVariables
  std::vector<int> m_FactorLevels;           // of the case in hand, per factor
  std::vector<int> m_FactorPlaceOfVariable;  // per variable number: its place among the factors, -1 when none
  std::vector<double> m_ExpressionValues;    // of the case in hand
};

}  // namespace orv

// The fields of CoxSettings one by one, under their names: for tests that look at every option.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/CoxSettings.h"

namespace orv::testing {

// Calls visit(name, field) for every field, in the order of the record. `Settings` is CoxSettings, const or not.
template <typename Settings, typename Visit>
void VisitFields(Settings& s, Visit visit) {
  visit("SurvivalVariables", s.SurvivalVariables);
  visit("SurvivalVariableCount", s.SurvivalVariableCount);
  visit("StartVariable", s.StartVariable);
  visit("StartVariableCount", s.StartVariableCount);
  visit("StopVariable", s.StopVariable);
  visit("StopVariableCount", s.StopVariableCount);
  visit("SubjectVariable", s.SubjectVariable);
  visit("SubjectVariableCount", s.SubjectVariableCount);
  visit("CovariateVariables", s.CovariateVariables);
  visit("CovariateCount", s.CovariateCount);
  visit("FactorVariables", s.FactorVariables);
  visit("FactorCount", s.FactorCount);
  visit("BackupCovariateVariables", s.BackupCovariateVariables);
  visit("BackupCovariateCount", s.BackupCovariateCount);
  visit("BackupFactorVariables", s.BackupFactorVariables);
  visit("BackupFactorCount", s.BackupFactorCount);
  visit("FactorCodes", s.FactorCodes);
  visit("FactorCodeCounts", s.FactorCodeCounts);
  visit("ReferenceCodes", s.ReferenceCodes);
  visit("ReferenceCodeIndex", s.ReferenceCodeIndex);
  visit("BackupFactorCodes", s.BackupFactorCodes);
  visit("BackupFactorCodeCounts", s.BackupFactorCodeCounts);
  visit("BackupReferenceCodes", s.BackupReferenceCodes);
  visit("BackupReferenceCodeIndex", s.BackupReferenceCodeIndex);
  visit("StartValues", s.StartValues);
  visit("HasFixedParameters", s.HasFixedParameters);
  visit("FixedParameterFlags", s.FixedParameterFlags);
  visit("StartValuesFileName", s.StartValuesFileName);
  visit("CensorVariable", s.CensorVariable);
  visit("CensorVariableCount", s.CensorVariableCount);
  visit("CodeForCompleteResponses", s.CodeForCompleteResponses);
  visit("CodeForCensoredResponses", s.CodeForCensoredResponses);
  visit("StrataVariable", s.StrataVariable);
  visit("StrataVariableCount", s.StrataVariableCount);
  visit("StrataCodes", s.StrataCodes);
  visit("StrataCodeCount", s.StrataCodeCount);
  visit("EntryTimeVariable", s.EntryTimeVariable);
  visit("UseRobustVariance", s.UseRobustVariance);
  visit("HasRun", s.HasRun);
  visit("BackupDesignEffects", s.BackupDesignEffects);
  visit("DesignEffects", s.DesignEffects);
  visit("VariableSymbols", s.VariableSymbols);
  visit("EffectSymbols", s.EffectSymbols);
  visit("BackupEffectSymbols", s.BackupEffectSymbols);
  visit("FullEffectSymbols", s.FullEffectSymbols);
  visit("DesignFactorSet", s.DesignFactorSet);
  visit("FinalFitReady", s.FinalFitReady);
  visit("ModelBuilding", s.ModelBuilding);
  visit("Likelihood", s.Likelihood);
  visit("InputType", s.InputType);
  visit("Coding", s.Coding);
  visit("MaxIterations", s.MaxIterations);
  visit("ConvergenceType", s.ConvergenceType);
  visit("UseStartValues", s.UseStartValues);
  visit("ConvergenceExponent", s.ConvergenceExponent);
  visit("HasNestedEffects", s.HasNestedEffects);
  visit("TimeDependentCovariateExpressions", s.TimeDependentCovariateExpressions);
  visit("TimeDependentCovariateNames", s.TimeDependentCovariateNames);
  visit("TimeExpressionVariables", s.TimeExpressionVariables);
  visit("PToEnter", s.PToEnter);
  visit("PToRemove", s.PToRemove);
  visit("EffectsToForce", s.EffectsToForce);
  visit("ForcedStepCount", s.ForcedStepCount);
  visit("DisplayBest", s.DisplayBest);
}

// Every field as a text, by name.
inline std::map<std::string, std::string> FieldTexts(const CoxSettings& settings) {
  std::map<std::string, std::string> texts;
  VisitFields(settings, [&](const char* name, const auto& field) { texts[name] = ::testing::PrintToString(field); });
  return texts;
}

// The names of the fields that differ.
inline std::set<std::string> ChangedFields(const CoxSettings& before, const CoxSettings& after) {
  const auto a = FieldTexts(before);
  const auto b = FieldTexts(after);
  std::set<std::string> changed;
  for (const auto& [name, text] : a) {
    if (b.at(name) != text) changed.insert(name);
  }
  return changed;
}

// Gives every field a value that is not its default.
struct Perturb {
  void operator()(const char*, bool& field) const { field = !field; }
  void operator()(const char*, std::int16_t& field) const { field = 7; }
  void operator()(const char*, std::int32_t& field) const { field = 9; }
  void operator()(const char*, double& field) const { field = 0.25; }
  void operator()(const char* name, std::string& field) const { field = name; }
  void operator()(const char* name, std::vector<std::string>& field) const { field = {name, "second"}; }
  void operator()(const char*, std::vector<bool>& field) const { field = {true, false, true}; }
  void operator()(const char* name, std::map<std::string, std::string>& field) const { field = {{name, "v1"}}; }
  template <typename Container>
  void operator()(const char* name, Container& field) const {
    FillWithNumbers(name, field);
  }

 private:
  template <typename T>
  static void FillWithNumbers(const char* name, std::vector<T>& field) {
    field = {1, static_cast<T>(std::string(name).size())};
  }
  template <typename T, std::size_t N>
  static void FillWithNumbers(const char*, std::array<T, N>& field) {
    field.fill(3);
  }
  static void FillWithNumbers(const char*, std::map<int, int>& field) { field = {{4, 1}}; }
};

}  // namespace orv::testing

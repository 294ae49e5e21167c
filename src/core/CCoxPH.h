// CCoxPH: the analysis object. It holds the options and the two objects of a run, and drives a run.
//
// A stand-alone use is: make one, AttachHost, Init, fill m_Settings, RunFromStartup, then the result operations.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/CoxSettings.h"
#include "host/CAnalysisSupport.h"
#include "host/Progress.h"

namespace orv {

class CCoxData;
class CCoxFit;
class ExpressionStore;
struct StartupFields;

class CCoxPH : public CAnalysisSupport {
 public:
  static constexpr int kAnalysisId = 6784;

  // Stages of the analysis.
  static constexpr int kInitStage = 100;
  static constexpr int kStartStage = 101;
  static constexpr int kResultsStage = 102;

  explicit CCoxPH(void* document);
  ~CCoxPH() override;

  int ForwardSequence(int fromStage, int toStage) override;
  const ModuleInstance& GetLibInstance() const override;
  int GetAnalysisID() const override { return kAnalysisId; }
  std::string GetAnalysisName() const override;

  // ---- Stages -------------------------------------------------------------------------------------------------
  // Binds the host's common records. Returns 1.
  int Init();
  // Create the startup and the results dialog. Return 0, or -1 when the dialog was not created.
  int StartAnalysis();
  int AnalysisResults();

  // ---- Options ------------------------------------------------------------------------------------------------
  // Another data file was opened: the options go back to their defaults (see ResetSettings).
  void ResetOptions();
  // Snapshots what model building will shrink: predictors, codes, effects, start values. Does nothing while the options
  // hold the model of a selection.
  void BackupFullModelData();
  // Puts the full model back when a run has reduced the options to the effects selected. Otherwise nothing happens.
  void RestoreFullModelData();
  // Gathers the predictor and weight variables and drops them. Kept because scripts call it.
  int ReadData();
  // Splits `text` at any of the characters of `delimiters`, drops leading blanks of each piece, and drops pieces that
  // are then empty. Returns the number of pieces, or -1 when the text is empty or an argument is null.
  static int SplitStrings(std::vector<std::string>* pieces, const std::string* text, const std::string* delimiters);
  // The text of one level of a factor: the label of its code, or the code. `variable` is a variable number, `level`
  // counts from 1. See FactorLevelText.
  std::string GetFactorLevel(int variable, int level) const;

  // ---- Checks -------------------------------------------------------------------------------------------------
  // Reads the fields of the startup dialog into the options. Returns 1 after a message that keeps the dialog open.
  int ReadStartupFields(StartupFields& fields, void* parent);
  // Vets the options. Returns 0 when valid, 1 after a message. Drops start values that are switched off, and repairs
  // the terms of time-dependent effects that a script named.
  int CheckInputsForCorrectness(void* parent);

  // ---- A run --------------------------------------------------------------------------------------------------
  // Fits the model that the options define. Returns 0 on success, 1 after a message, or silently when cancelled while
  // reading. The options stay as they were, but that a selection reduces them to its effects until the analysis is
  // modified; best subsets fall back to all effects where they are not offered.
  int RunCoxRegression(void* parent);
  // What OK in the startup dialog does: reads the fields, checks, and runs with the results locked. A failed run
  // leaves no run objects behind. Returns 0 when the results can be shown.
  int RunFromStartup(StartupFields& fields, void* parent);
  // Back from the results to the startup dialog: releases the run objects, puts the full model back and resets
  // ModelBuilding.
  void ModifyAnalysis();
  // The number of coefficients of the design as the options stand, without reading a case.
  int DesignCoefficientCount();

  // ---- Result tables ------------------------------------------------------------------------------------------
  // Each needs a run. They compute from the fit and never change it.
  void CreateSummarySpreadsheet();
  void CreateNoCovariateSummarySpreadsheet();
  void CreateParameterEstimateSpreadsheet(double confidenceLevel);
  // A test of each effect; evaluates the information at beta = 0 under the overparameterized coding.
  void CreateType3Spreadsheet(double confidenceLevel);
  void CreateIterationHistorySpreadsheet();
  void CreateDesignTermsSpreadsheet();
  void CreateCovarianceSpreadsheet();
  void CreateCorrelationSpreadsheet();

  // ---- Run objects --------------------------------------------------------------------------------------------
  // Replaces the case data. Data that a fit still refers to are kept until the fit goes.
  void ReplaceData(std::unique_ptr<CCoxData> data);
  // Replaces the fit. Data that only the old fit referred to go with it.
  void ReplaceFit(std::unique_ptr<CCoxFit> fit);
  // Releases the case data and the fit.
  void ReleaseRunObjects();

  CoxSettings m_Settings;
  std::unique_ptr<CCoxData> m_pCoxData;
  std::unique_ptr<CCoxFit> m_pCoxFit;
  std::unique_ptr<ProgressHolder> m_pProgress;
  std::unique_ptr<ExpressionStore> m_pExpressions;  // compiled time expressions, until the next check of the options
  int m_DocumentFlag = 0;  // a flag of the analysis document: cleared by the script functions, set again by dialogs

 private:
  void FallBackFromBestSubsets();
  int FitModel();
  // Runs the search of the options and reduces the design to what it chose. Returns 1 after a message. Throws
  // NumericalFailure from the exhaustive search for best subsets.
  int BuildModel();

  std::unique_ptr<CCoxData> m_pReplacedData;  // kept alive for m_pCoxFit
  bool m_isReduced = false;                   // the options hold the effects of a selection alone
  // Of the full model, with its backups.
  std::vector<double> m_fullStartValues;
  std::vector<bool> m_fullFixedFlags;
};

}  // namespace orv

// The module's entry function and the plain functions that scripts call, under their exported names.
//
// Each script function takes a variant that holds the automation object of a dialog of the analysis and finds the
// analysis through it. It returns 2 when there is none, and otherwise clears the flag of the analysis document.
#pragma once

namespace orv {

class CAnalysisSupport;

// The automation object of a dialog, as far as the script functions need it.
class AutomationObject {
 public:
  virtual ~AutomationObject() = default;
  // The analysis whose dialog this is; null when it has none.
  virtual CAnalysisSupport* Analysis() = 0;
};

// A script's variant: it holds an automation object, or something else and then null.
struct ScriptVariant {
  AutomationObject* Object = nullptr;  // not owned
};

inline constexpr int kNoAnalysis = 2;

}  // namespace orv

#define ORV_EXPORT extern "C" __attribute__((visibility("default")))

// Makes an analysis with default options and no document. The caller owns it and attaches a host to it. Null when
// memory is out.
ORV_EXPORT orv::CAnalysisSupport* Qvd6NewAnalysis();

// Coefficients of the data of the last run; 0 when there are none.
ORV_EXPORT int GetNumberOfDesignCoefficients(orv::ScriptVariant* dialog);

// Whether an estimator of the baseline is valid for the fit of the analysis: 0 when it is, 1 when it is not or there is
// no fit.
ORV_EXPORT int CheckBreslowFlag(orv::ScriptVariant* dialog);
ORV_EXPORT int CheckKaplanFlag(orv::ScriptVariant* dialog);

// Factors of the analysis.
ORV_EXPORT int GetNumberOfFactors(orv::ScriptVariant* dialog);

// Builds the design for the options as they stand and returns its number of coefficients. No case is read. The data of
// the analysis are replaced.
ORV_EXPORT int GetDesignNumberOfCoefficientsBeforeRun(orv::ScriptVariant* dialog);

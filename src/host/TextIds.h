// Ids of the module's string table, by what the texts say. The texts stand in core/StringTable.cpp.
#pragma once

namespace orv::TextIds {

inline constexpr int AnalysisName = 10000;
inline constexpr int NoCensorVariableChosen = 10009;
inline constexpr int TooManyVariables = 10010;
inline constexpr int NoStartVariableChosen = 10014;
inline constexpr int NoStopVariableChosen = 10015;
inline constexpr int EmptyExpression = 10023;
inline constexpr int IterationsOutOfRange = 10024;
inline constexpr int ReviewTimeExpressions = 10025;
inline constexpr int SurvivalVariableCountInvalid = 10026;
inline constexpr int CompleteCodeInvalid = 10027;
inline constexpr int CensoredCodeInvalid = 10028;
inline constexpr int NotAFunctionOfTime = 10034;
inline constexpr int NoTimeDependentCovariate = 10037;
inline constexpr int NoCensorVariable = 10039;
inline constexpr int NoStartVariable = 10040;
inline constexpr int NoStopVariable = 10041;
inline constexpr int NoSurvivalVariable = 10042;
inline constexpr int NoEffects = 10043;
inline constexpr int TooFewCompleteCases = 10051;
inline constexpr int CodesIdentical = 10052;
inline constexpr int NoValidCases = 10053;
inline constexpr int OutOfMemory = 10102;
inline constexpr int SubjectIsTime = 10111;
inline constexpr int SubjectIsStrata = 10112;
inline constexpr int SubjectIsFactor = 10113;
inline constexpr int SubjectIsCovariate = 10114;
inline constexpr int PToRemoveOutOfRange = 10119;
inline constexpr int PToEnterOutOfRange = 10120;
inline constexpr int EffectsToForceOutOfRange = 10121;
inline constexpr int NoEffectSelected = 10125;
inline constexpr int ReadingData = 10132;
inline constexpr int NoStartValues = 10133;
inline constexpr int MaximizingLikelihood = 10136;
inline constexpr int LastIterationUsed = 10178;
inline constexpr int DesignInvalid = 10187;
inline constexpr int WeightsWithDiscrete = 10188;
inline constexpr int IterationsNotPositive = 10190;
inline constexpr int NoTimeCovariateName = 10191;
inline constexpr int NotEnoughCompleteInStrata = 10192;
inline constexpr int NoResultsAvailable = 10196;
inline constexpr int NotAnOrvantaSpreadsheet = 10197;
inline constexpr int InvalidStartValues = 10198;
inline constexpr int TooManyStartValueColumns = 10199;
inline constexpr int OneStratumOnly = 10201;
inline constexpr int ModelBuildingStopped = 10213;
inline constexpr int TooFewFactorCodes = 10214;
inline constexpr int FixedFlagsConflict = 10224;
inline constexpr int StartValueCountWrong = 10225;
inline constexpr int StartValuesWithoutPredictors = 10226;
inline constexpr int DesignWithoutPredictors = 10227;
inline constexpr int NestingNeedsOverparameterized = 10228;
inline constexpr int TimeCovariatesNeedInputType = 10244;

}  // namespace orv::TextIds

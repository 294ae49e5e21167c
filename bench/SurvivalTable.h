// Survival data with a fixed seed.
#pragma once

#include "standalone/tables/MemoryTable.h"

namespace orv::bench {

// Where the time at risk of a row begins.
enum class Starts {
  None,   // right-censored rows, no variable of starts
  Zero,   // intervals that all begin at 0: the risk sets of right-censored rows
  Spread  // late entries; and, but for a table of tied events, several adjacent rows a subject
};

// The kinds of data that cost differently.
struct SurvivalKind {
  const char* Name = "";
  bool Efron = false;
  bool HeavyTies = false;  // at most kTimes distinct times, however many cases
  int Strata = 0;          // 0 for none
  Starts Start = Starts::None;
  int TiedEvents = 0;  // above 0: so many events at each time that has any, for the discrete likelihood
  bool HasTimeDependentEffect = false;  // the model takes kTimeDependentEffect as its last effect
};

inline constexpr int kTimes = 100;
inline constexpr int kStrata = 20;

// The effect whose value changes with time: the first predictor times log(time + 1).
inline constexpr char kTimeDependentEffect[] = "x1*log(T_+1)";

// Variables in this order: `covariates` predictors (every third is 0 or 1, the others standard normal), "time" (the
// stop of an interval), "status" (1 complete, 0 censored), with strata "stratum", and with starts "start". Times are
// exponential with proportional hazards. About 30 of 100 right-censored rows are complete, and with starts 23; of a
// table of tied events exactly 60 in 100, so that 3/5 of `cases` should be a multiple of TiedEvents.
MemoryTable MakeSurvivalTable(const SurvivalKind& kind, int cases, int covariates);

// The times with events in such a table of no tied events: that many, or as many as there are on the grid.
inline double TimesWithEvents(const SurvivalKind& kind, double events) {
  return kind.HeavyTies && events > kTimes ? kTimes : events;
}

// The numbers of those variables in the table, from 1; 0 for one that there is not.
struct SurvivalVariables {
  SurvivalVariables(const SurvivalKind& kind, int covariates);

  int Time;
  int Status;
  int Stratum;
  int Start;
};

}  // namespace orv::bench

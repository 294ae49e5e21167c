// Which cases stay: the reasons to leave a case out, one by one and in their order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "data/TestCases.h"

namespace orv {
namespace {

using testing::BuildData;
using testing::ColumnByCase;
using ::testing::ElementsAre;
using testing::ExcludedCount;
using testing::GoodCases;
using testing::ReadData;
using testing::TestAnalysis;
using testing::TrialCase;
using testing::TrialColumns;

using Options = std::function<void(TestAnalysis&)>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void SurvivalTime(TestAnalysis& test) {
  test.Covariates({"x"}).Factor("f", {1, 2}).Time({"time"}).Status("status").DefaultDesign();
}

void Interval(TestAnalysis& test) {
  SurvivalTime(test);
  test.Interval("entry", "time");
}

void TimeDependent(TestAnalysis& test) {
  SurvivalTime(test);
  test.Settings().InputType = InputTypes::TimeDependent;
  test.Settings().TimeExpressionVariables = {test.Number("z")};
}

// The reason for which a case is left out among good ones; None when it is kept.
Exclusion ReasonFor(const Options& setup, const TrialCase& tested) {
  std::vector<TrialCase> cases = GoodCases();
  cases.push_back(tested);
  TestAnalysis test(TrialColumns(cases));
  setup(test);
  const CCoxData& data = ReadData(test);
  EXPECT_LE(ExcludedCount(data), 1) << "a good case was left out";
  for (std::size_t reason = 1; reason < data.Excluded.ByReason.size(); ++reason) {
    if (data.Excluded.ByReason[reason] > 0) return static_cast<Exclusion>(reason);
  }
  EXPECT_EQ(data.ValidCaseCount, 5U);
  return Exclusion::None;
}

TEST(Exclusion, ReasonsKeepTheirNumbers) {
  EXPECT_EQ(static_cast<int>(Exclusion::None), 0);
  EXPECT_EQ(static_cast<int>(Exclusion::Missing), 1);
  EXPECT_EQ(static_cast<int>(Exclusion::Weight), 2);
  EXPECT_EQ(static_cast<int>(Exclusion::Time), 3);
  EXPECT_EQ(static_cast<int>(Exclusion::Entry), 4);
  EXPECT_EQ(static_cast<int>(Exclusion::Stratum), 5);
  EXPECT_EQ(static_cast<int>(Exclusion::Factor), 6);
  EXPECT_EQ(static_cast<int>(Exclusion::Status), 7);
  EXPECT_EQ(static_cast<int>(Exclusion::Expression), 8);
  EXPECT_EQ(static_cast<int>(Exclusion::Reserved), 9);
}

struct Fault {
  const char* What;
  Exclusion Reason;
  std::function<void(TrialCase&)> Break;
};

// In the order in which they are looked for.
const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {"missing covariate", Exclusion::Missing, [](TrialCase& c) { c.x = kMissingCode; }},
      {"weight 0", Exclusion::Weight, [](TrialCase& c) { c.w = 0.0; }},
      {"negative time", Exclusion::Time, [](TrialCase& c) { c.time = -1.0; }},
      {"stratum not selected", Exclusion::Stratum, [](TrialCase& c) { c.g = 9.0; }},
      {"neither status code", Exclusion::Status, [](TrialCase& c) { c.status = 5.0; }},
      {"missing variable of an expression", Exclusion::Expression, [](TrialCase& c) { c.z = kMissingCode; }},
      {"factor code not selected", Exclusion::Factor, [](TrialCase& c) { c.f = 9.0; }},
  };
  return faults;
}

void EveryTest(TestAnalysis& test) {
  TimeDependent(test);
  test.Strata("g", {1, 2}).Weights("w");
}

TEST(ReadCase, LeavesACaseOutForEachReason) {
  EXPECT_EQ(ReasonFor(EveryTest, TrialCase{}), Exclusion::None);
  for (const Fault& fault : Faults()) {
    TrialCase tested;
    fault.Break(tested);
    EXPECT_EQ(ReasonFor(EveryTest, tested), fault.Reason) << fault.What;
  }
}

TEST(ReadCase, TheFirstReasonEndsTheTests) {
  const auto& faults = Faults();
  for (std::size_t first = 0; first < faults.size(); ++first) {
    for (std::size_t second = first + 1; second < faults.size(); ++second) {
      TrialCase tested;
      faults[first].Break(tested);
      faults[second].Break(tested);
      EXPECT_EQ(ReasonFor(EveryTest, tested), faults[first].Reason)
          << faults[first].What << ", " << faults[second].What;
    }
  }
}

// A row may be read as soon as the design stands.
TEST(ReadCase, NeedsOnlyTheDesign) {
  TestAnalysis test(TrialColumns(GoodCases()));
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  CCoxData& data = BuildData(test);
  //                                  x             f  g  time  status  w  id  entry  z
  const std::vector<double> good = {1, 2.0, 1, 1, 4.0, 1.0, 1, 1, 0, 3};
  std::vector<double> missing = good;
  missing[1] = kMissingCode;
  std::vector<double> negative = good;
  negative[4] = -4.0;
  EXPECT_EQ(data.CheckMissing(good.data()), 0);
  EXPECT_EQ(data.CheckMissing(missing.data()), 1);
  EXPECT_EQ(data.ReadCase(good.data(), 1, 1.0), Exclusion::None);
  EXPECT_EQ(data.ReadCase(missing.data(), 2, 1.0), Exclusion::Missing);
  EXPECT_EQ(data.ReadCase(negative.data(), 3, 1.0), Exclusion::Time);
}

// ---- Missing values -----------------------------------------------------------------------------------------------

TEST(CheckMissing, TestsTheVariablesOfEachInputType) {
  const Options withEntry = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Settings().EntryTimeVariable = test.Number("entry");
  };
  const Options timeDependentWithEntry = [](TestAnalysis& test) {
    TimeDependent(test);
    test.Settings().EntryTimeVariable = test.Number("entry");
  };
  const Options intervalWithEntry = [](TestAnalysis& test) {
    Interval(test);
    test.Settings().StartVariable = test.Number("w");
    test.Settings().EntryTimeVariable = test.Number("entry");
  };
  const Options stratified = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Strata("g", {1, 2, -9});
  };
  const Options withSubject = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Settings().SubjectVariable = test.Number("id");
  };
  const Options intervalWithSubject = [](TestAnalysis& test) {
    Interval(test);
    test.Settings().SubjectVariable = test.Number("id");
  };
  const Options covariateOutsideTheDesign = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Design({{"f", "v2"}});
  };
  const Options factorOutsideTheDesign = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Design({{"x", "v1"}});
  };
  const Options crossed = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Design({{"x*f", "v1*v2"}});
  };
  // The missing code of every variable is 7 here, a value that passes every other test of its variable.
  struct {
    const char* What;
    Options Choose;
    double TrialCase::*Field;
    Exclusion Reason;
  } const cases[] = {
      {"covariate", SurvivalTime, &TrialCase::x, Exclusion::Missing},
      {"factor", SurvivalTime, &TrialCase::f, Exclusion::Missing},
      {"covariate of a cross", crossed, &TrialCase::x, Exclusion::Missing},
      {"factor of a cross", crossed, &TrialCase::f, Exclusion::Missing},
      {"covariate outside the design", covariateOutsideTheDesign, &TrialCase::x, Exclusion::None},
      {"factor outside the design", factorOutsideTheDesign, &TrialCase::f, Exclusion::Factor},
      {"survival time", SurvivalTime, &TrialCase::time, Exclusion::Missing},
      {"survival time, time-dependent", TimeDependent, &TrialCase::time, Exclusion::None},
      {"entry time", withEntry, &TrialCase::entry, Exclusion::Missing},
      {"entry time that is not used", SurvivalTime, &TrialCase::entry, Exclusion::None},
      {"entry time, time-dependent", timeDependentWithEntry, &TrialCase::entry, Exclusion::None},
      {"entry time, intervals", intervalWithEntry, &TrialCase::entry, Exclusion::None},
      {"start", Interval, &TrialCase::entry, Exclusion::Missing},
      {"stop", Interval, &TrialCase::time, Exclusion::Missing},
      {"stratum", stratified, &TrialCase::g, Exclusion::Missing},
      {"stratum that is not used", SurvivalTime, &TrialCase::g, Exclusion::None},
      {"subject", withSubject, &TrialCase::id, Exclusion::Missing},
      {"subject, intervals", intervalWithSubject, &TrialCase::id, Exclusion::Missing},
      {"subject that is not used", SurvivalTime, &TrialCase::id, Exclusion::None},
      {"variable of an expression", TimeDependent, &TrialCase::z, Exclusion::Expression},
      {"status", SurvivalTime, &TrialCase::status, Exclusion::Status},
      {"a variable without a role", SurvivalTime, &TrialCase::z, Exclusion::None},
  };
  constexpr double kSeven = 7.0;
  for (const auto& c : cases) {
    TrialCase tested{.time = 20};
    tested.*c.Field = kSeven;
    const Options withCodes = [&c](TestAnalysis& test) {
      c.Choose(test);
      for (int variable = 1; variable <= test.Table.VariableCount(); ++variable) {
        test.Host.MissingCodes[variable] = kSeven;
      }
    };
    EXPECT_EQ(ReasonFor(withCodes, tested), c.Reason) << c.What;
  }
}

TEST(CheckMissing, AValueWithinFifteenUnitsOfTheCodeIsMissing) {
  double above = 7.0;
  for (int step = 0; step < 15; ++step) above = std::nextafter(above, kInfinity);
  const Options options = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Host.MissingCodes[test.Number("x")] = 7.0;
  };
  EXPECT_EQ(ReasonFor(options, {.x = above}), Exclusion::Missing);
  EXPECT_EQ(ReasonFor(options, {.x = std::nextafter(above, kInfinity)}), Exclusion::None);
}

// The variables of the design are compared strictly, the others plainly: an infinite code is found in a time but not
// in a covariate.
TEST(CheckMissing, AnInfiniteCodeIsFoundOutsideTheDesignOnly) {
  const Options options = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Settings().EntryTimeVariable = test.Number("entry");
    test.Settings().SubjectVariable = test.Number("id");
    for (int variable = 1; variable <= test.Table.VariableCount(); ++variable) {
      test.Host.MissingCodes[variable] = kInfinity;
    }
  };
  EXPECT_EQ(ReasonFor(options, {.x = kInfinity}), Exclusion::None);
  EXPECT_EQ(ReasonFor(options, {.f = kInfinity}), Exclusion::Factor);
  EXPECT_EQ(ReasonFor(options, {.time = kInfinity}), Exclusion::Missing);
  EXPECT_EQ(ReasonFor(options, {.entry = kInfinity}), Exclusion::Missing);
  EXPECT_EQ(ReasonFor(options, {.id = kInfinity}), Exclusion::Missing);
  const Options stratified = [&](TestAnalysis& test) {
    options(test);
    test.Strata("g", {1, 2});
  };
  EXPECT_EQ(ReasonFor(stratified, {.g = kInfinity}), Exclusion::Missing);
  const Options interval = [](TestAnalysis& test) {
    Interval(test);
    test.Host.MissingCodes[test.Number("entry")] = -kInfinity;
    test.Host.MissingCodes[test.Number("time")] = kInfinity;
  };
  EXPECT_EQ(ReasonFor(interval, {.entry = -kInfinity}), Exclusion::Missing);
  EXPECT_EQ(ReasonFor(interval, {.time = kInfinity}), Exclusion::Missing);
  const Options timeDependent = [](TestAnalysis& test) {
    TimeDependent(test);
    test.Host.MissingCodes[test.Number("z")] = kInfinity;
  };
  EXPECT_EQ(ReasonFor(timeDependent, {.z = kInfinity}), Exclusion::Expression);
}

TEST(CheckMissing, AVariableOfTheDesignThatIsATimeTooIsFoundByEitherTest) {
  const Options options = [](TestAnalysis& test) {
    test.Covariates({"time"}).Time({"time"}).Status("status").DefaultDesign();
    test.Host.MissingCodes[test.Number("time")] = kInfinity;
  };
  EXPECT_EQ(ReasonFor(options, {.time = kInfinity}), Exclusion::Missing);
}

TEST(ReadCase, AMissingStatusIsKeptWhenACodeEqualsTheMissingCode) {
  const Options options = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Host.MissingCodes[test.Number("status")] = 0.0;
  };
  EXPECT_EQ(ReasonFor(options, {.status = 0.0}), Exclusion::None);
}

TEST(ReadCase, CountsTheMissingVariablesOfTheCasesLeftOut) {
  std::vector<TrialCase> cases = GoodCases();
  cases.push_back({.x = kMissingCode, .f = kMissingCode});
  cases.push_back({.x = kMissingCode});
  cases.push_back({.time = kMissingCode});
  TestAnalysis test(TrialColumns(cases));
  SurvivalTime(test);
  test.Design({{"x", "v1"}, {"f", "v2"}, {"x*f", "v1*v2"}});
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.Excluded.Of(Exclusion::Missing), 3);
  const std::map<int, int> expected = {{test.Number("x"), 2}, {test.Number("f"), 1}, {test.Number("time"), 1}};
  EXPECT_EQ(data.Excluded.MissingByVariable, expected);
}

// ---- Weights ------------------------------------------------------------------------------------------------------

TEST(ReadCase, WeightsMustBePositiveAndWholeUnderTheDiscreteLikelihood) {
  const double almostTwo = std::nextafter(2.0, 3.0);
  struct {
    double Weight;
    bool On;
    Exclusion UnderEfron, UnderDiscrete;
  } const cases[] = {
      {1.0, true, Exclusion::None, Exclusion::None},       {3.0, true, Exclusion::None, Exclusion::None},
      {0.5, true, Exclusion::None, Exclusion::Weight},     {2.5, true, Exclusion::None, Exclusion::Weight},
      {almostTwo, true, Exclusion::None, Exclusion::None}, {2.0000001, true, Exclusion::None, Exclusion::Weight},
      {0.0, true, Exclusion::Weight, Exclusion::Weight},   {-0.0, true, Exclusion::Weight, Exclusion::Weight},
      {-1.0, true, Exclusion::Weight, Exclusion::Weight},  {kMissingCode, true, Exclusion::Weight, Exclusion::Weight},
      {kNaN, true, Exclusion::Weight, Exclusion::Weight},  {kInfinity, true, Exclusion::None, Exclusion::Weight},
      {0.0, false, Exclusion::None, Exclusion::None},      {-1.0, false, Exclusion::None, Exclusion::None},
      {2.5, false, Exclusion::None, Exclusion::None},
  };
  for (const auto& c : cases) {
    for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete}) {
      const Options options = [&](TestAnalysis& test) {
        SurvivalTime(test);
        if (c.On) test.Weights("w");
        test.Settings().Likelihood = static_cast<std::int16_t>(likelihood);
      };
      EXPECT_EQ(ReasonFor(options, {.w = c.Weight}),
                likelihood == Likelihoods::Discrete ? c.UnderDiscrete : c.UnderEfron)
          << "weight " << c.Weight << ", weighting " << c.On << ", likelihood " << likelihood;
    }
  }
}

TEST(ReadCase, ABadWeightDropsACaseFromEveryCount) {
  for (const double weight : {0.0, -2.0}) {
    std::vector<TrialCase> cases = GoodCases();
    cases.push_back({.x = 100, .f = 2, .g = 1, .status = 1, .w = weight, .id = 44});
    TestAnalysis test(TrialColumns(cases));
    SurvivalTime(test);
    test.Strata("g", {1, 2}).Weights("w");
    test.Settings().SubjectVariable = test.Number("id");
    const CCoxData& data = ReadData(test);
    EXPECT_EQ(data.ValidCaseCount, 4U);
    EXPECT_EQ(data.CompleteCaseCount, 2U);
    EXPECT_EQ(data.CensoredCaseCount, 2U);
    EXPECT_EQ(data.CasesByStratum, (std::map<double, double>{{1, 2}, {2, 2}}));
    EXPECT_EQ(data.SubjectIds.count(44), 0U);
    EXPECT_DOUBLE_EQ(data.CovariateMeans[0], 11.0 / 4.0);
    EXPECT_EQ(data.FactorLevelWeights[0], (std::map<double, double>{{1, 2}, {2, 2}}));
    EXPECT_TRUE(test.Host.Messages().empty());
  }
}

// ---- Times --------------------------------------------------------------------------------------------------------

TEST(ReadCase, ASurvivalTimeOfZeroStaysAndANegativeOneDoesNot) {
  for (const Options& options : {Options(SurvivalTime), Options(TimeDependent)}) {
    EXPECT_EQ(ReasonFor(options, {.time = 0.0}), Exclusion::None);
    EXPECT_EQ(ReasonFor(options, {.time = -0.0}), Exclusion::None);
    EXPECT_EQ(ReasonFor(options, {.time = 1e-300}), Exclusion::None);
    EXPECT_EQ(ReasonFor(options, {.time = -1e-300}), Exclusion::Time);
    EXPECT_EQ(ReasonFor(options, {.time = -5}), Exclusion::Time);
  }
}

TEST(ReadCase, AnIntervalNeedsALengthAndMustNotBeginBeforeZero) {
  struct {
    double Start, Stop;
    Exclusion Reason;
  } const cases[] = {
      {0, 1, Exclusion::None},  {0, 1e-300, Exclusion::None}, {2, 3, Exclusion::None},
      {2, 2, Exclusion::Time},  {0, 0, Exclusion::Time},      {3, 2, Exclusion::Time},
      {-1, 2, Exclusion::Time}, {-3, -2, Exclusion::Time},    {-1e-300, 5, Exclusion::Time},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ReasonFor(Interval, {.time = c.Stop, .entry = c.Start}), c.Reason) << c.Start << " to " << c.Stop;
  }
}

TEST(ReadCase, TheEntryTimeItselfIsNotChecked) {
  for (const auto inputType : {InputTypes::SurvivalTime, InputTypes::TimeDependent}) {
    const Options options = [&](TestAnalysis& test) {
      SurvivalTime(test);
      test.Settings().InputType = static_cast<std::int16_t>(inputType);
      test.Settings().EntryTimeVariable = test.Number("entry");
    };
    EXPECT_EQ(ReasonFor(options, {.time = 5, .entry = 50}), Exclusion::None);
    EXPECT_EQ(ReasonFor(options, {.time = 5, .entry = -50}), Exclusion::None);
    // A negative time has its reason before the entry time is looked at.
    EXPECT_EQ(ReasonFor(options, {.time = -5, .entry = 0}), Exclusion::Time);
  }
}

// Columns "start" and "end" of dates, one case after four good ones, with a missing code for the end.
struct DateResult {
  Exclusion Reason = Exclusion::None;
  double Time = 0.0;
};

DateResult ReadDates(double start, double end, double missingCode) {
  TestAnalysis test({{"x", {1, 2, 3, 5, 4}},
                     {"start", {10, 10, 10, 10, start}},
                     {"end", {12, 13, 14, 15, end}},
                     {"status", {1, 0, 1, 0, 1}}});
  test.Covariates({"x"}).Time({"start", "end"}).Status("status").DefaultDesign();
  test.Host.MissingCodes[test.Number("start")] = missingCode;
  test.Host.MissingCodes[test.Number("end")] = missingCode;
  const CCoxData& data = ReadData(test);
  DateResult result;
  for (std::size_t reason = 1; reason < data.Excluded.ByReason.size(); ++reason) {
    if (data.Excluded.ByReason[reason] > 0) result.Reason = static_cast<Exclusion>(reason);
  }
  if (result.Reason == Exclusion::None) result.Time = ColumnByCase(data, data.SurvivalColumn).at(5);
  return result;
}

TEST(ReadCase, TheTimeBetweenTwoDatesIsTheSecondMinusTheFirst) {
  EXPECT_EQ(ReadDates(100, 130, -1).Time, 30.0);
  EXPECT_EQ(ReadDates(100, 100, -1).Time, 0.0);
  EXPECT_EQ(ReadDates(100, 100, -1).Reason, Exclusion::None);
  EXPECT_EQ(ReadDates(100, 99, -1).Reason, Exclusion::Time);
  EXPECT_EQ(ReadDates(-100, -70, -1).Time, 30.0);
}

TEST(ReadCase, AMissingSecondDateIsTakenForADate) {
  const DateResult later = ReadDates(100, 99999, 99999);
  EXPECT_EQ(later.Reason, Exclusion::None);
  EXPECT_EQ(later.Time, 99899.0);
  EXPECT_EQ(ReadDates(100, -99999, -99999).Reason, Exclusion::Time);
  EXPECT_EQ(ReadDates(99999, 100, 99999).Reason, Exclusion::Missing) << "the first date is tested";
}

// Month, day and year of start and end; the four good cases run from 1 March to 1 April 2001.
DateResult ReadDateParts(const std::vector<double>& parts, double missingCode = kMissingCode) {
  const char* names[] = {"m1", "d1", "y1", "m2", "d2", "y2"};
  const double good[] = {3, 1, 2001, 4, 1, 2001};
  std::vector<testing::TestColumn> columns = {{"x", {1, 2, 3, 5, 4}}, {"status", {1, 0, 1, 0, 1}}};
  std::vector<std::string> time;
  for (std::size_t k = 0; k < 6; ++k) {
    columns.push_back({names[k], {good[k], good[k], good[k], good[k], parts[k]}});
    time.emplace_back(names[k]);
  }
  TestAnalysis test(columns);
  test.Covariates({"x"}).Time(time).Status("status").DefaultDesign();
  for (const char* name : names) test.Host.MissingCodes[test.Number(name)] = missingCode;
  const CCoxData& data = ReadData(test);
  DateResult result;
  for (std::size_t reason = 1; reason < data.Excluded.ByReason.size(); ++reason) {
    if (data.Excluded.ByReason[reason] > 0) result.Reason = static_cast<Exclusion>(reason);
  }
  if (result.Reason == Exclusion::None) result.Time = ColumnByCase(data, data.SurvivalColumn).at(5);
  return result;
}

TEST(ReadCase, SixPartsOfDatesGiveATimeInDays) {
  struct {
    const char* What;
    std::vector<double> Parts;
    Exclusion Reason;
    double Time;
  } const cases[] = {
      {"a month", {3, 1, 2001, 4, 1, 2001}, Exclusion::None, 31},
      {"a leap year", {1, 1, 2000, 1, 1, 2001}, Exclusion::None, 366},
      {"the same day", {7, 7, 2007, 7, 7, 2007}, Exclusion::None, 0},
      {"the day before", {7, 7, 2007, 7, 6, 2007}, Exclusion::Time, 0},
      {"month 13 at the start", {13, 1, 2001, 4, 1, 2002}, Exclusion::Time, 0},
      {"month 13 at the end", {3, 1, 2001, 13, 1, 2001}, Exclusion::Time, 0},
      {"month 0", {0, 1, 2001, 4, 1, 2001}, Exclusion::Time, 0},
      {"year 0", {3, 1, 0, 4, 1, 2001}, Exclusion::Time, 0},
      {"two invalid dates", {13, 1, 2001, 13, 1, 2001}, Exclusion::Time, 0},
      {"day 31 of a month of 30 days", {4, 31, 2001, 5, 11, 2001}, Exclusion::None, 10},
      {"the change of calendar", {10, 4, 1582, 10, 15, 1582}, Exclusion::None, 1},
  };
  for (const auto& c : cases) {
    const DateResult result = ReadDateParts(c.Parts);
    EXPECT_EQ(result.Reason, c.Reason) << c.What;
    EXPECT_EQ(result.Time, c.Time) << c.What;
  }
}

TEST(ReadCase, OfSixPartsOnlyTheFirstIsTestedForMissingValues) {
  constexpr double kTwelve = 12.0;  // the missing code here, and a valid month, day or year
  EXPECT_EQ(ReadDateParts({12, 1, 2001, 12, 25, 2001}, kTwelve).Reason, Exclusion::Missing);
  const std::vector<double> base = {1, 1, 2001, 11, 1, 2001};
  for (std::size_t part = 1; part < 6; ++part) {
    std::vector<double> parts = base;
    parts[part] = kTwelve;
    const Exclusion expected = part == 5 ? Exclusion::Time : Exclusion::None;  // the year 12 lies before the start
    EXPECT_EQ(ReadDateParts(parts, kTwelve).Reason, expected) << "part " << part + 1;
  }
}

// ---- Strata, status, factors --------------------------------------------------------------------------------------

TEST(ReadCase, AStratumIsRoundedAndMustBeAmongTheSelectedCodes) {
  const Options options = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Strata("g", {1, 2, 3});
    test.Settings().StrataCodeCount = {2};  // code 3 is not among the first two
  };
  struct {
    double Stratum;
    Exclusion Reason;
  } const cases[] = {{1, Exclusion::None},      {2, Exclusion::None},     {1.4, Exclusion::None},
                     {2.49, Exclusion::None},   {1.5, Exclusion::None},   {0.5, Exclusion::None},
                     {2.5, Exclusion::Stratum}, {3, Exclusion::Stratum},  {0.4, Exclusion::Stratum},
                     {0, Exclusion::Stratum},   {-1, Exclusion::Stratum}, {1e12, Exclusion::Stratum}};
  for (const auto& c : cases) EXPECT_EQ(ReasonFor(options, {.g = c.Stratum}), c.Reason) << "stratum " << c.Stratum;
}

TEST(ReadCase, WithoutStrataCodesEveryCaseIsLeftOut) {
  for (const std::vector<std::int16_t>& counts : {std::vector<std::int16_t>{}, std::vector<std::int16_t>{0}}) {
    TestAnalysis test(TrialColumns(GoodCases()));
    SurvivalTime(test);
    test.Strata("g", {1, 2});
    test.Settings().StrataCodeCount = counts;
    CCoxData& data = BuildData(test);
    EXPECT_EQ(data.ReadCases(nullptr), 1);
    EXPECT_EQ(data.Excluded.Of(Exclusion::Stratum), 4);
  }
}

TEST(ReadCase, TheStatusIsComparedExactly) {
  const double almostOne = std::nextafter(1.0, 2.0);
  struct {
    double Value;
    Exclusion Reason;
  } const cases[] = {{1.0, Exclusion::None},         {0.0, Exclusion::None},   {-0.0, Exclusion::None},
                     {almostOne, Exclusion::Status}, {2.0, Exclusion::Status}, {5e-324, Exclusion::Status},
                     {kNaN, Exclusion::Status}};
  for (const auto& c : cases) {
    EXPECT_EQ(ReasonFor(SurvivalTime, {.status = c.Value}), c.Reason) << "status " << c.Value;
  }
}

TEST(ReadCase, TheCensoredCodeIsTriedFirst) {
  TestAnalysis test(TrialColumns(GoodCases()));
  SurvivalTime(test);
  test.Settings().CodeForCompleteResponses = 0.0;
  test.Settings().CodeForCensoredResponses = 0.0;
  CCoxData& data = BuildData(test);
  EXPECT_EQ(data.ReadCases(nullptr), 1);  // no complete case is left
  EXPECT_EQ(data.CensoredCaseCount, 2U);
  EXPECT_EQ(data.CompleteCaseCount, 0U);
}

TEST(ReadCase, EveryFactorIsMatchedWhetherTheDesignUsesItOrNot) {
  const Options options = [](TestAnalysis& test) {
    SurvivalTime(test);
    test.Design({{"x", "v1"}});
  };
  EXPECT_EQ(ReasonFor(options, {.f = 3}), Exclusion::Factor);
  EXPECT_EQ(ReasonFor(options, {.f = 1.5}), Exclusion::Factor);
  EXPECT_EQ(ReasonFor(options, {.f = 2}), Exclusion::None);
}

TEST(ReadCase, EveryVariableOfTheExpressionsIsTested) {
  const Options options = [](TestAnalysis& test) {
    TimeDependent(test);
    test.Settings().TimeExpressionVariables = {test.Number("w"), test.Number("z")};
  };
  EXPECT_EQ(ReasonFor(options, {.w = kMissingCode}), Exclusion::Expression);
  EXPECT_EQ(ReasonFor(options, {.z = kMissingCode}), Exclusion::Expression);
  EXPECT_EQ(ReasonFor(options, {}), Exclusion::None);
}

// ---- Subjects -----------------------------------------------------------------------------------------------------

TEST(ReadCase, SubjectsGetDenseIdsInOrderOfFirstAppearance) {
  std::vector<TrialCase> cases = GoodCases();
  const double subjects[] = {30, 10, 30, 20};
  for (std::size_t k = 0; k < cases.size(); ++k) cases[k].id = subjects[k];
  TestAnalysis test(TrialColumns(cases));
  SurvivalTime(test);
  test.Settings().SubjectVariable = test.Number("id");
  const CCoxData& data = ReadData(test);
  EXPECT_EQ(data.SubjectIds, (std::map<double, int>{{30, 0}, {10, 1}, {20, 2}}));
  EXPECT_EQ(data.NextSubjectId, 3);
  EXPECT_EQ(ColumnByCase(data, data.SubjectColumn), (std::map<int, double>{{1, 0}, {2, 1}, {3, 0}, {4, 2}}));
}

TEST(ReadCase, ACaseLeftOutForItsFactorStillTakesAnIdAndLeavesNoGap) {
  struct {
    const char* What;
    TrialCase Tested;
    bool TakesAnId;
  } const cases[] = {
      {"factor", {.f = 9, .id = 50}, true},
      {"status", {.status = 9, .id = 50}, false},
      {"stratum", {.g = 9, .id = 50}, false},
      {"time", {.time = -1, .id = 50}, false},
      {"missing", {.x = kMissingCode, .id = 50}, false},
  };
  for (const auto& c : cases) {
    std::vector<TrialCase> all = GoodCases();
    const double subjects[] = {30, 10, 20, 10};
    for (std::size_t k = 0; k < all.size(); ++k) all[k].id = subjects[k];
    all.insert(all.begin() + 1, c.Tested);
    TestAnalysis test(TrialColumns(all));
    SurvivalTime(test);
    test.Strata("g", {1, 2});
    test.Settings().SubjectVariable = test.Number("id");
    const CCoxData& data = ReadData(test);
    const std::map<double, int> with = {{30, 0}, {50, 1}, {10, 2}, {20, 3}};
    const std::map<double, int> without = {{30, 0}, {10, 1}, {20, 2}};
    EXPECT_EQ(data.SubjectIds, c.TakesAnId ? with : without) << c.What;
    EXPECT_EQ(data.NextSubjectId, c.TakesAnId ? 4 : 3) << c.What;
    EXPECT_EQ(data.ValidCaseCount, 4U) << c.What;
  }
}

}  // namespace
}  // namespace orv

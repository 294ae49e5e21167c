// The pass with covariates that change with time against its definition, and how often it asks for their values.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "fit/NumericalFailure.h"
#include "fit/PassCases.h"
#include "fit/ReferenceTimeDependent.h"
#include "fit/TimeDependentPass.h"

namespace orv {
namespace {

using testing::EvaluateTimeDependentReference;
using testing::ExpectAgrees;
using testing::ExpectNear;
using testing::PassCases;
using testing::PassValue;
using testing::RandomCases;
using testing::RandomVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::RunPass;
using testing::ToReal;

// The expressions of these tests. Those from 2 on read the design values of the case, which stand first in its row.
double ExpressionAt(int expression, double time, const double* x) {
  switch (expression) {
    case 1:
      return time;
    case 2:
      return time > 2.5 + x[0] ? 1.0 : 0.0;
    case 3:
      return std::log(time + 1.0) * x[0];
    default:
      return -0.5 + 0.1 * time;
  }
}

std::vector<double> DesignOf(const std::vector<TimeColumn>& design, const ReferenceCase& one, double time) {
  std::vector<double> x;
  for (const TimeColumn& column : design) {
    x.push_back(one.X[static_cast<std::size_t>(column.Column)]);
    for (const int expression : column.Expressions) x.back() *= ExpressionAt(expression, time, one.X.data());
  }
  return x;
}

int Count(const std::vector<TimeColumn>& design) {
  return static_cast<int>(design.size());
}

std::unique_ptr<TimeDependentPass> MakePass(Host& host,
                                            const PassCases& cases,
                                            const std::vector<TimeColumn>& design,
                                            bool efron,
                                            bool strata,
                                            const TimeDependentPass::ExpressionValue& value = ExpressionAt) {
  return std::make_unique<TimeDependentPass>(host, cases.Table(), cases.Count(), cases.Columns(strata), design, value,
                                             efron ? 1 : 0);
}

PassValue EvaluateAt(const PassCases& cases,
                     const std::vector<TimeColumn>& design,
                     bool efron,
                     bool strata,
                     const std::vector<double>& beta) {
  HeapOnlyHost host;
  return RunPass(*MakePass(host, cases, design, efron, strata), Count(design), beta);
}

struct Setting {
  const char* what;
  unsigned seed;
  int n, p, times, strata;
  bool weighted;
  std::vector<TimeColumn> design;
};

const std::vector<Setting>& Settings() {
  static const std::vector<Setting> settings = {
      {"one column", 1, 30, 1, 6, 1, false, {{0, {3}}}},
      {"plain and varying columns", 2, 40, 3, 6, 1, true, {{0, {}}, {1, {1}}, {2, {2}}}},
      {"several expressions a column", 3, 40, 3, 8, 1, true, {{2, {1, 2}}, {0, {4}}, {1, {3, 1, 4}}}},
      {"strata", 4, 50, 2, 5, 3, false, {{0, {1}}, {1, {2}}}},
      {"strata and weights", 5, 50, 3, 4, 4, true, {{0, {}}, {1, {4}}, {2, {2}}}},
      {"one time", 6, 20, 2, 1, 1, true, {{0, {1}}, {1, {4}}}},
      {"no ties", 7, 30, 2, 100000, 2, true, {{0, {2}}, {1, {}}}},
      {"no expressions", 8, 40, 2, 6, 3, true, {{1, {}}, {0, {}}}},
      {"a column twice", 9, 30, 1, 6, 1, false, {{0, {}}, {0, {1}}, {0, {2}}}},
  };
  return settings;
}

TEST(TimeDependentPass, AgreesWithTheDefinition) {
  for (const Setting& s : Settings()) {
    std::vector<ReferenceCase> random = RandomCases(s.seed, s.n, s.p, s.times, s.strata, s.weighted);
    if (s.times > 1000) {
      for (ReferenceCase& one : random) one.Time /= 10000.0;
    }
    const PassCases cases(random);
    const int p = Count(s.design);
    const auto designAt = [&](const ReferenceCase& one, double time) { return DesignOf(s.design, one, time); };
    for (const bool efron : {false, true}) {
      for (const bool atZero : {false, true}) {
        std::vector<double> beta = RandomVector(s.seed + 100, p);
        if (atZero) beta.assign(beta.size(), 0.0);
        const PassValue value = EvaluateAt(cases, s.design, efron, s.strata > 1, atZero ? std::vector<double>{} : beta);
        const ReferenceValue expected =
            EvaluateTimeDependentReference(cases.Cases(), ToReal(beta), efron, s.strata > 1, designAt);
        ExpectAgrees(value, expected, 2e-12 * s.n,
                     std::string(s.what) + (efron ? ", Efron" : ", Breslow") + (atZero ? ", at zero" : ""));
      }
    }
  }
}

// x T_: at 2 the case in hand and the other have 2 and 6; at 3 the other is alone. The relative risks are 2^2 and 2^6.
TEST(TimeDependentPass, EvaluatesTheWholeRiskSetAtTheTimeOfTheEvent) {
  const PassCases cases({{2.0, true, 1.0, 0.0, {1.0}}, {3.0, true, 1.0, 0.0, {3.0}}});
  const PassValue value = EvaluateAt(cases, {{0, {1}}}, false, false, {std::log(2.0)});
  EXPECT_NEAR(value.L, 2 * std::log(2.0) - std::log(68.0), 1e-14);
  EXPECT_NEAR(value.U[0], 2 - (2 * 4 + 6 * 64) / 68.0, 1e-14);
  EXPECT_NEAR(value.H(0, 0), 4.0 * 64 / (68.0 * 68.0) * 16, 1e-13);
}

TEST(TimeDependentPass, WithoutExpressionsItIsTheRightCensoredPass) {
  const PassCases cases(RandomCases(11, 60, 3, 6, 1, true));
  for (const bool efron : {false, true}) {
    ExpectNear(EvaluateAt(cases, {{0, {}}, {1, {}}, {2, {}}}, efron, false, {0.4, -0.9, 0.2}),
               testing::Evaluate(cases, efron, false, {0.4, -0.9, 0.2}), 1e-11, efron ? "Efron" : "Breslow");
  }
}

// All members of a risk set have the same value then, so nothing tells the event from the others.
TEST(TimeDependentPass, ExpressionOfTheTimeAloneHasNoScore) {
  std::vector<ReferenceCase> random = RandomCases(12, 50, 2, 7, 2, true);
  for (ReferenceCase& one : random) one.X[0] = 1.0;
  const PassCases cases(random);
  for (const bool efron : {false, true}) {
    for (const std::vector<double>& beta : {std::vector<double>{}, std::vector<double>{0.3, -0.7}}) {
      const PassValue value = EvaluateAt(cases, {{0, {1}}, {1, {}}}, efron, true, beta);
      // To the last bit, so that the column leaves the fit however large its values are.
      EXPECT_EQ(value.U[0], 0.0);
      EXPECT_EQ(value.H(0, 0), 0.0);
      EXPECT_EQ(value.H(0, 1), 0.0);
      EXPECT_GT(value.H(1, 1), 1.0);
    }
  }
}

// ---- Strata ---------------------------------------------------------------------------------------------------------

TEST(TimeDependentPass, RiskSetsRunAcrossTheStrata) {
  const PassCases cases({{5.0, true, 1.0, 1.0, {0.0}}, {3.0, true, 1.0, 2.0, {0.0}}, {4.0, false, 1.0, 2.0, {0.0}}});
  EXPECT_NEAR(EvaluateAt(cases, {{0, {}}}, false, true, {}).L, -std::log(3.0) - std::log(2.0), 1e-15)
      << "the rows of the later stratum are at risk at 5, below which their times lie";
}

TEST(TimeDependentPass, StrataCutTiedGroups) {
  const PassCases cases({{5.0, true, 1.0, 1.0, {0.0}}, {5.0, true, 1.0, 2.0, {0.0}}, {6.0, false, 1.0, 2.0, {0.0}}});
  EXPECT_NEAR(EvaluateAt(cases, {{0, {}}}, false, true, {}).L, -std::log(3.0) - std::log(2.0), 1e-15);
  EXPECT_NEAR(EvaluateAt(cases, {{0, {}}}, false, false, {}).L, -2 * std::log(3.0), 1e-15);
}

// The half that Efron's second term takes out is that of every event at the time, in the later stratum too.
TEST(TimeDependentPass, EventsOfALaterStratumAreTakenOutWithThoseOfTheGroup) {
  const PassCases cases({{5.0, true, 1.0, 1.0, {0.0}},
                         {5.0, true, 1.0, 1.0, {0.0}},
                         {5.0, true, 1.0, 2.0, {0.0}},
                         {6.0, false, 1.0, 2.0, {0.0}}});
  EXPECT_NEAR(EvaluateAt(cases, {{0, {}}}, true, true, {}).L, -std::log(4.0) - std::log(2.5) - std::log(2.0), 1e-14);
}

// ---- Kept values ----------------------------------------------------------------------------------------------------

struct Counted {
  int calls = 0;
  TimeDependentPass::ExpressionValue value = [this](int expression, double time, const double* cells) {
    ++calls;
    return ExpressionAt(expression, time, cells);
  };
  Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
};

const std::vector<TimeColumn>& CountedDesign() {
  static const std::vector<TimeColumn> design = {{0, {}}, {1, {1, 2}}, {2, {3}}};
  return design;
}

TEST(TimeDependentPass, ValuesAreAskedForOnce) {
  // 3 groups with 1, 2 and 1 events in risk sets of 6, 5 and 2: 13 members, 4 events and 3 rows to centre on, 3
  // expressions each.
  const PassCases cases({{1.0, true, 1.0, 0.0, {0.1, 1, 2}},
                         {2.0, true, 1.0, 0.0, {0.2, 2, 1}},
                         {2.0, true, 1.0, 0.0, {0.3, 1, 1}},
                         {2.0, false, 1.0, 0.0, {0.4, 0, 2}},
                         {4.0, true, 1.0, 0.0, {0.5, 2, 2}},
                         {5.0, false, 1.0, 0.0, {0.6, 1, 0}}});
  HeapOnlyHost host;
  Counted counted;
  const auto pass = MakePass(host, cases, CountedDesign(), true, false, counted.value);
  RunPass(*pass, 3, {});
  EXPECT_EQ(counted.calls, (6 + 5 + 2 + 4 + 3) * 3);
  RunPass(*pass, 3, {0.1, 0.2, 0.3});
  EXPECT_EQ(counted.calls, (6 + 5 + 2 + 4 + 3) * 3) << "they do not depend on the parameters";
}

TEST(TimeDependentPass, KeptValuesAndThoseComputedAnewGiveTheSameNumbers) {
  const PassCases cases(RandomCases(13, 60, 3, 7, 2, true));
  const std::vector<std::vector<double>> vectors = {{}, {0.4, -0.2, 0.1}, {-0.3, 0.5, 0.2}, {0.4, -0.2, 0.1}};
  const auto run = [&](HeapOnlyHost& host, Counted& counted) {
    const auto pass = MakePass(host, cases, CountedDesign(), true, true, counted.value);
    EXPECT_FALSE(pass->Failed());
    std::vector<PassValue> values;
    for (const std::vector<double>& beta : vectors) values.push_back(RunPass(*pass, 3, beta));
    return values;
  };
  HeapOnlyHost host;
  Counted kept;
  const std::vector<PassValue> expected = run(host, kept);
  // The store of the kept values is the last request.
  const int requests = host.Requests();
  host.FailAllocation(requests);
  Counted anew;
  const std::vector<PassValue> values = run(host, anew);
  EXPECT_EQ(anew.calls, 4 * kept.calls);
  for (std::size_t k = 0; k < vectors.size(); ++k) {
    EXPECT_EQ(values[k].L, expected[k].L) << k;
    EXPECT_EQ(values[k].U, expected[k].U) << k;
    EXPECT_EQ(values[k].H, expected[k].H) << k;
  }
  EXPECT_EQ(values[1].L, values[3].L) << "a pass starts from nothing";
  EXPECT_EQ(values[1].H, values[3].H);
}

// 3000 cases with an event each: 4.5 million members, times 4 columns, is more than the store may hold.
TEST(TimeDependentPass, ValuesBeyondTheStoreAreComputedAnew) {
  std::vector<ReferenceCase> many;
  for (int i = 0; i < 3000; ++i) many.push_back({1.0 + i, true, 1.0, 0.0, {i % 7 * 0.1}});
  const PassCases cases(many);
  HeapOnlyHost host;
  long calls = 0;
  const auto pass = MakePass(host, cases, {{0, {4}}, {0, {4}}, {0, {4}}, {0, {4}}}, false, false,
                             [&](int, double time, const double*) {
                               ++calls;
                               return time * 1e-4;
                             });
  const long aPass = 4L * (3000L * 3001 / 2 + 2 * 3000);
  RunPass(*pass, 4, {});
  EXPECT_EQ(calls, aPass);
  RunPass(*pass, 4, {0.1, 0.1, 0.1, 0.1});
  EXPECT_EQ(calls, 2 * aPass);
}

TEST(TimeDependentPass, FailureOfAnExpressionLeavesThePassUsable) {
  const PassCases cases(RandomCases(14, 40, 3, 7, 1, true));
  HeapOnlyHost host;
  int left = 50;
  const auto pass =
      MakePass(host, cases, CountedDesign(), true, false, [&](int expression, double time, const double* cells) {
        if (--left == 0) throw NumericalFailure();
        return ExpressionAt(expression, time, cells);
      });
  EXPECT_THROW(RunPass(*pass, 3, {}), NumericalFailure);
  const std::vector<double> beta = {0.4, -0.2, 0.1};
  const PassValue value = RunPass(*pass, 3, beta);
  const PassValue expected = EvaluateAt(cases, CountedDesign(), true, false, beta);
  EXPECT_EQ(value.L, expected.L);
  EXPECT_EQ(value.U, expected.U);
  EXPECT_EQ(value.H, expected.H);
}

TEST(TimeDependentPass, FailsWhenMemoryIsOutForMoreThanTheKeptValues) {
  const PassCases cases(RandomCases(15, 20, 3, 5, 2, true));
  const auto failed = [&](HeapOnlyHost& host) { return MakePass(host, cases, CountedDesign(), true, true)->Failed(); };
  HeapOnlyHost host;
  EXPECT_FALSE(failed(host));
  const int requests = host.Requests();
  for (int failing = 1; failing <= requests; ++failing) {
    host.FailAllocation(failing);
    EXPECT_EQ(failed(host), failing < requests) << "allocation " << failing;
    EXPECT_EQ(host.LiveBlocks(), 0) << "allocation " << failing;
  }
}

TEST(TimeDependentPass, HasALikelihoodWithoutColumns) {
  const PassCases cases({{1.0, true, 1.0, 0.0, {}}, {2.0, true, 1.0, 0.0, {}}, {3.0, false, 1.0, 0.0, {}}});
  EXPECT_NEAR(EvaluateAt(cases, {}, false, false, {}).L, -std::log(3.0) - std::log(2.0), 1e-15);
}

}  // namespace
}  // namespace orv

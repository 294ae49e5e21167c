#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "core/ScriptFunctions.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

class Dialog : public AutomationObject {
 public:
  explicit Dialog(CAnalysisSupport* analysis) : m_analysis(analysis) {}
  CAnalysisSupport* Analysis() override { return m_analysis; }

 private:
  CAnalysisSupport* m_analysis;
};

// An analysis of another module of the host.
class OtherAnalysis : public CAnalysisSupport {
 public:
  OtherAnalysis() : CAnalysisSupport(nullptr, {}) {}
  const ModuleInstance& GetLibInstance() const override { return m_module; }
  int GetAnalysisID() const override { return 1; }
  std::string GetAnalysisName() const override { return "other"; }

 private:
  ModuleInstance m_module;
};

struct ScriptFunction {
  const char* Name;
  int (*Call)(ScriptVariant*);
};

const ScriptFunction kFunctions[] = {
    {"GetNumberOfDesignCoefficients", &GetNumberOfDesignCoefficients},
    {"GetNumberOfFactors", &GetNumberOfFactors},
    {"GetDesignNumberOfCoefficientsBeforeRun", &GetDesignNumberOfCoefficientsBeforeRun},
};

TEST(ScriptFunctions, ReturnTwoForAVariantWithoutAnAnalysis) {
  OtherAnalysis other;
  Dialog withoutAnalysis(nullptr);
  Dialog ofAnotherModule(&other);
  ScriptVariant empty;
  ScriptVariant closed{&withoutAnalysis};
  ScriptVariant foreign{&ofAnotherModule};
  for (const ScriptFunction& function : kFunctions) {
    EXPECT_EQ(function.Call(nullptr), 2) << function.Name;
    EXPECT_EQ(function.Call(&empty), 2) << function.Name;
    EXPECT_EQ(function.Call(&closed), 2) << function.Name;
    EXPECT_EQ(function.Call(&foreign), 2) << function.Name;
  }
}

class Scripts : public ::testing::Test {
 protected:
  Scripts()
      : m_test({{"x", {1, 4, 2, 5}}, {"f", {1, 2, 3, 1}}, {"time", {1, 2, 3, 4}}, {"status", {1, 1, 0, 1}}}),
        m_dialog(&m_test.Analysis),
        m_variant{&m_dialog} {
    m_test.Covariates({"x"}).Factor("f", {1, 2, 3}).Time({"time"}).Status("status").DefaultDesign();
  }
  TestAnalysis m_test;
  Dialog m_dialog;
  ScriptVariant m_variant;
};

TEST_F(Scripts, ClearTheFlagOfTheDocument) {
  for (const ScriptFunction& function : kFunctions) {
    m_test.Analysis.m_DocumentFlag = 1;
    function.Call(&m_variant);
    EXPECT_EQ(m_test.Analysis.m_DocumentFlag, 0) << function.Name;
  }
}

TEST_F(Scripts, CountTheFactors) {
  EXPECT_EQ(GetNumberOfFactors(&m_variant), 1);
  m_test.Factor("x", {1, 2});
  EXPECT_EQ(GetNumberOfFactors(&m_variant), 2);
}

TEST_F(Scripts, CountTheCoefficientsOfTheCurrentData) {
  EXPECT_EQ(GetNumberOfDesignCoefficients(&m_variant), 0);
  ASSERT_EQ(m_test.Run(), 0);
  EXPECT_EQ(GetNumberOfDesignCoefficients(&m_variant), 3);
}

TEST_F(Scripts, CountTheCoefficientsOfADesignBeforeItsRun) {
  EXPECT_EQ(GetDesignNumberOfCoefficientsBeforeRun(&m_variant), 3);
  EXPECT_EQ(m_test.Host.CaseFetches, 0);
  EXPECT_EQ(GetNumberOfDesignCoefficients(&m_variant), 3) << "the design stays after the call";
  m_test.Settings().Coding = Codings::Overparameterized;
  EXPECT_EQ(GetNumberOfDesignCoefficients(&m_variant), 3);
  EXPECT_EQ(GetDesignNumberOfCoefficientsBeforeRun(&m_variant), 4);
  EXPECT_EQ(GetNumberOfDesignCoefficients(&m_variant), 4);
}

TEST_F(Scripts, ADesignWithoutEffectsHasNoCoefficients) {
  m_test.Settings().DesignEffects.clear();
  EXPECT_EQ(GetDesignNumberOfCoefficientsBeforeRun(&m_variant), 0);
}

TEST_F(Scripts, TheDesignBeforeARunHasTheCurrentInputType) {
  m_test.Settings().InputType = InputTypes::TimeDependent;
  m_test.Design({{"x", "v1"}, {"late", "TIME_EXPRESSION1"}, {"f*late", "v2*TIME_EXPRESSION1"}});
  EXPECT_EQ(GetDesignNumberOfCoefficientsBeforeRun(&m_variant), 4);
  EXPECT_EQ(m_test.Data().DesignColumns[1].ExpressionCount, 1);
}

TEST(Qvd6NewAnalysis, MakesAnAnalysisWithoutADocument) {
  const std::unique_ptr<CAnalysisSupport> analysis(Qvd6NewAnalysis());
  ASSERT_NE(analysis, nullptr);
  EXPECT_EQ(analysis->m_pDocument, nullptr);
  EXPECT_EQ(analysis->GetAnalysisID(), 6784);
  EXPECT_NE(dynamic_cast<CCoxPH*>(analysis.get()), nullptr);
}

}  // namespace
}  // namespace orv

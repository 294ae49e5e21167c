#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "host/ModuleInstance.h"
#include "standalone/host/StandaloneHost.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int16_t kSelected = 0;

MemoryTable SampleTable() {
  MemoryTable table("trial.csv");
  table.AddVariable({.Name = "time", .Labels = {}, .Values = {5, 8, 11}});
  table.AddVariable({.Name = "a variable with a long name", .MissingCode = -99, .Labels = {}, .Values = {1, -99, 0}});
  table.AddVariable({.Name = "arm",
                     .Type = VariableType::Text,
                     .Labels = {{1, "drug"}, {2, "placebo"}},
                     .Values = {2, 1, kMissingCode}});
  return table;
}

class FetchedCase {
 public:
  FetchedCase(StandaloneHost& host, int caseNumber) : Values(static_cast<std::size_t>(host.GetNbVars()) + 1, -1.0) {
    Answer = host.cstrtw(caseNumber, Values.data(), HasWeight, Weight, WeightVariable);
  }
  std::vector<double> Values;
  int HasWeight = -1;
  double Weight = -1.0;
  int WeightVariable = -1;
  std::int16_t Answer = -1;
};

TEST(StandaloneHostCases, AreTheRowsOfTheTableBehindTheirNumber) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_EQ(host.GetNbVars(), 3);
  EXPECT_EQ(host.GetInputTable().CaseCount(), 3);
  const FetchedCase second(host, 2);
  EXPECT_EQ(second.Answer, kSelected);
  EXPECT_THAT(second.Values, ElementsAre(2, 8, -99, 1));
  EXPECT_EQ(second.HasWeight, 0);
  EXPECT_EQ(second.Weight, 1.0);
  EXPECT_EQ(second.WeightVariable, 0);
  EXPECT_THAT(FetchedCase(host, 3).Values, ElementsAre(3, 11, 0, kMissingCode));
}

TEST(StandaloneHostCases, AreWeightedByAVariable) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  HostCommons commons;
  host.InitCommons(commons);
  ASSERT_NE(commons.Weights, nullptr);
  EXPECT_FALSE(commons.Weights->On);
  host.SetWeightVariable(1);
  EXPECT_TRUE(commons.Weights->On);
  EXPECT_EQ(commons.Weights->Variable, 1);
  const FetchedCase third(host, 3);
  EXPECT_EQ(third.HasWeight, 1);
  EXPECT_EQ(third.Weight, 11.0);
  EXPECT_EQ(third.WeightVariable, 1);
  EXPECT_EQ(commons.Weights->Weight, 11.0) << "the shared record is that of the case fetched last";
  host.SetWeightVariable(0);
  EXPECT_FALSE(commons.Weights->On);
  EXPECT_EQ(FetchedCase(host, 3).Weight, 1.0);
  EXPECT_EQ(commons.Weights->Weight, 1.0);
}

TEST(StandaloneHostCases, WithoutARequiredValueAreRejectedAndCountedAtTheFirst) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_THAT(host.RejectedAsMissing(), IsEmpty());
  host.RequireValues({3, 2, 1});
  EXPECT_EQ(FetchedCase(host, 1).Answer, kSelected);
  EXPECT_NE(FetchedCase(host, 2).Answer, kSelected);
  const FetchedCase third(host, 3);
  EXPECT_NE(third.Answer, kSelected);
  EXPECT_THAT(third.Values, ElementsAre(3, 11, 0, kMissingCode)) << "a rejected case is filled in all the same";
  EXPECT_THAT(host.Required(), ElementsAre(3, 2, 1));
  EXPECT_THAT(host.RejectedAsMissing(), ElementsAre(1, 1, 0));
}

TEST(StandaloneHostCases, OutsideTheSelectionAreDeselected) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  host.SelectCases({1, 0, 1});
  EXPECT_EQ(FetchedCase(host, 1).Answer, kSelected);
  const FetchedCase second(host, 2);
  EXPECT_EQ(second.Answer, 1);
  EXPECT_THAT(second.Values, ElementsAre(2, 8, -99, 1)) << "a deselected case is filled in all the same";
  EXPECT_EQ(FetchedCase(host, 3).Answer, kSelected);
  host.SelectCases({});
  EXPECT_EQ(FetchedCase(host, 2).Answer, kSelected) << "without flags every case is selected";
}

TEST(StandaloneHostCases, AreRejectedForWantOfAValueOnlyWhenTheyAreSelected) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  host.RequireValues({2, 3});  // missing in the second and the third case
  host.SelectCases({1, 0, 1});
  EXPECT_EQ(FetchedCase(host, 1).Answer, kSelected);
  EXPECT_EQ(FetchedCase(host, 2).Answer, 1);
  EXPECT_EQ(FetchedCase(host, 3).Answer, 2);
  EXPECT_THAT(host.RejectedAsMissing(), ElementsAre(0, 1));
}

TEST(StandaloneHostCases, HaveTheirNumberForANameUnlessTheTableNamesThem) {
  MemoryTable table = SampleTable();
  std::string label;
  {
    StandaloneHost host(table);
    EXPECT_EQ(host.getlab(3, label), 0);
    EXPECT_EQ(label, "3");
    EXPECT_NE(host.getlab(0, label), 0);
    EXPECT_NE(host.getlab(4, label), 0);
  }
  table.SetCaseNames({"Anna", "", "Carl"});
  StandaloneHost host(table);
  EXPECT_EQ(host.getlab(1, label), 0);
  EXPECT_EQ(label, "Anna");
  EXPECT_EQ(host.getlab(2, label), 0);
  EXPECT_EQ(label, "2");
}

TEST(StandaloneHostVariables, HaveNamesAndMissingCodes) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  std::string name;
  EXPECT_EQ(host.GetVarNameEx(1, 1, name), 0);
  EXPECT_EQ(name, "a variable with a long name");
  EXPECT_NE(host.GetVarNameEx(1, 3, name), 0);
  EXPECT_NE(host.GetVarNameEx(1, -1, name), 0);
  double code = 0.0;
  host.getmd5(2, code);
  EXPECT_EQ(code, -99.0);
  host.getmd5(1, code);
  EXPECT_EQ(code, kMissingCode);
  host.getmd5(4, code);
  EXPECT_EQ(code, kMissingCode) << "a variable that is not there";
}

TEST(StandaloneHostVariables, HaveLabels) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_EQ(host.GetInputTable().ValueLabel(3, 2.0), "placebo");
  EXPECT_EQ(host.GetInputTable().ValueLabel(3, 3.0), "");
  EXPECT_EQ(host.GetInputTable().ValueLabel(1, 5.0), "");
  std::string label;
  double value = 0.0;
  EXPECT_EQ(host.vvlcod8(3, 1, label, value), 0);
  EXPECT_EQ(label, "drug");
  EXPECT_EQ(value, 1.0);
  EXPECT_EQ(host.vvlcod(3, 2, label, value), 0);
  EXPECT_EQ(label, "placebo");
  EXPECT_NE(host.vvlcod8(1, 5, label, value), 0);
  EXPECT_EQ(label, "");
}

TEST(StandaloneHostNames, KeysStandForLongNames) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  const std::string key = host.Get8CharHash("a variable with a long name");
  EXPECT_EQ(key.size(), 8U);
  EXPECT_EQ(host.Get8CharHash("a variable with a long name"), key);
  EXPECT_EQ(host.ExpandPossible8CharHash(key), "a variable with a long name");
  EXPECT_EQ(host.ExpandPossible8CharHash("age"), "age");
  EXPECT_EQ(host.StripFormatting("<b>age"), "<b>age") << "names of data files carry no marks";
}

// ---- Formulas -----------------------------------------------------------------------------------------------------

// The room that the module offers for one formula.
struct FormulaRecord {
  FormulaRecord() {
    Area.Instructions = Instructions.data();
    Area.InstructionBytes = static_cast<int>(Instructions.size());
    Area.Symbols = Symbols.data();
    Area.SymbolRoom = static_cast<int>(Symbols.size());
  }
  std::vector<std::int16_t> Listed() const { return {Symbols.begin(), Symbols.begin() + Area.SymbolCount}; }

  std::vector<unsigned char> Instructions = std::vector<unsigned char>(32000);
  std::vector<std::int16_t> Symbols = std::vector<std::int16_t>(50);
  CompiledFormulaArea Area;
};

CAnalysisNamesArray NamesOf(StandaloneHost& host) {
  CAnalysisNamesArray names;
  host.GetVarNamFromTable(names);
  return names;
}

TEST(StandaloneHostFormulas, UseTheNamesOfTheTableInOrder) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  CAnalysisNamesArray names = NamesOf(host);
  ASSERT_EQ(names.Count(), 3);
  EXPECT_EQ(names.Name(1), "time");
  EXPECT_EQ(names.Name(2), "a variable with a long name");
  EXPECT_EQ(names.Name(3), "arm");
  EXPECT_EQ(names.InsertNewStr("T_"), 4);
  EXPECT_EQ(names.Name(4), "T_");
  EXPECT_EQ(host.Names().Count(), 3);
}

TEST(StandaloneHostFormulas, AreCompiledAndRun) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  CAnalysisNamesArray names = NamesOf(host);
  names.InsertNewStr("T_");
  FormulaRecord record;
  ASSERT_EQ(host.COMP("\x1DTIME*T_ + (ARM = 'PLACEBO');", names, record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
  EXPECT_THAT(record.Listed(), ElementsAre(1, 4, 3));
  const double placebo[] = {5.0, 3.0, 2.0};
  const double drug[] = {5.0, 3.0, 1.0};
  double result = -1.0;
  EXPECT_EQ(host.RunSpreadsheetFormula(placebo, record.Instructions.data(), result), 0);
  EXPECT_EQ(result, 16.0);
  EXPECT_EQ(host.RunSpreadsheetFormula(drug, record.Instructions.data(), result), 0);
  EXPECT_EQ(result, 15.0);
}

TEST(StandaloneHostFormulas, ThatAreWrongOrFailAreAnswersNotCrashes) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  CAnalysisNamesArray names = NamesOf(host);
  names.InsertNewStr("T_");
  FormulaRecord record;
  ASSERT_EQ(host.COMP("\x0ATIME*WHO;", names, record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 6);
  ASSERT_EQ(host.COMP("\x05"
                      "1/T_;",
                      names, record.Area),
            0);
  ASSERT_EQ(record.Area.ErrorPosition, 0);
  const double zero = 0.0;
  double result = 7.0;
  EXPECT_NE(host.RunSpreadsheetFormula(&zero, record.Instructions.data(), result), 0);
}

TEST(StandaloneHostMessages, AreKeptAndPassedOn) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  host.dsplst(0, "before the sink");
  std::vector<std::string> seen;
  host.SetMessageSink([&seen](const std::string& text) { seen.push_back(text); });
  host.dsplst(0, "a list message");
  EXPECT_EQ(host.DspMessageBox(0, nullptr, "a box"), 0);
  const ModuleInstance instance{.LoadText = [](int id) { return id == 10053 ? "a module text" : ""; }};
  host.DisplayInstError(instance, nullptr, 10053);
  EXPECT_THAT(seen, ElementsAre("a list message", "a box", "a module text"));
  EXPECT_THAT(host.Messages(), ElementsAre("before the sink", "a list message", "a box", "a module text"));
}

TEST(StandaloneHostMemory, IsUsableAlignedAndFreed) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{8}, std::size_t{100000}}) {
    void* block = nullptr;
    ASSERT_EQ(host.AllocMem(&block, size), 0) << size;
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U) << size;
    std::memset(block, 0xFF, size);
    host.FreeMem(block);
    ASSERT_EQ(host.GetMem(&block, size), 0) << size;
    std::memset(block, 0xFF, size);
    host.FreeMem(block);
  }
  host.FreeMem(nullptr);
}

// g++ tells by a macro that it compiles for the sanitizer, clang by a feature.
#if defined(__SANITIZE_ADDRESS__)
#define ORV_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORV_ADDRESS_SANITIZER
#endif
#endif

#if !defined(ORV_ADDRESS_SANITIZER)
// The sanitizer takes such a request for a mistake.
TEST(StandaloneHostMemory, ThatIsNotThereIsAnAnswerNotACrash) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  void* block = &host;
  const volatile std::size_t everything = std::numeric_limits<std::size_t>::max() / 2;
  EXPECT_NE(host.AllocMem(&block, everything), 0);
  EXPECT_EQ(block, nullptr);
}
#endif

// A sheet of one number, with fields of 8 bytes.
SheetArguments SheetOf(const double& cell, const std::string& columnName, const std::string& rowName) {
  SheetArguments sheet;
  sheet.RowCount = 1;
  sheet.ColumnCount = 1;
  sheet.ColumnNameWidth = 8;
  sheet.RowNameWidth = 8;
  sheet.Cells = &cell;
  sheet.ColumnNames = columnName.data();
  sheet.RowNames = rowName.data();
  return sheet;
}

TEST(StandaloneHostDocuments, AreNamedByTheirResultWithLongNames) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_TRUE(host.Documents().IsEmpty());
  EXPECT_EQ(host.LastDocument(), nullptr);
  const std::string key = host.Get8CharHash("a variable with a long name");
  const double cell = 2.5;
  const std::string column = std::string("age").append(5, '\0');
  host.SetResultName("estimates");
  host.looka4(SheetOf(cell, column, key));
  ASSERT_NE(host.LastDocument(), nullptr);
  host.LastDocument()->SetCustomProperty("Complete", "4");
  host.SetResultName("summary");
  host.looka4(SheetOf(cell, column, key));

  ASSERT_EQ(host.Documents().Size(), 2U);
  const ResultDocument& first = host.Documents()[0];
  EXPECT_EQ(first.Name, "estimates");
  EXPECT_EQ(first.Properties.at("Complete"), "4");
  const auto& sheet = std::get<SheetContent>(first.Content);
  EXPECT_THAT(sheet.RowNames, ElementsAre("a variable with a long name"));
  EXPECT_EQ(sheet.Columns.at(0).Name, "age");
  EXPECT_THAT(sheet.Columns[0].Numbers, ElementsAre(2.5));
  EXPECT_EQ(host.Documents()[1].Name, "summary");
  EXPECT_TRUE(host.Documents()[1].Properties.empty());
}

TEST(StandaloneHostDocuments, OfADialogAreEditedAndNoOutput) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  const double cell = 1.0;
  const std::string column = std::string("age").append(5, '\0');
  EXPECT_EQ(host.looka4dlg(SheetOf(cell, column, column), nullptr), nullptr) << "nobody edits";
  host.SetSheetEditor([](SheetContent& sheet) {
    sheet.Columns.at(0).Numbers.at(0) = 7.0;
    return true;
  });
  const HostDocument* document = host.looka4dlg(SheetOf(cell, column, column), nullptr);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->NumberAt(0, 0), 7.0);
  EXPECT_EQ(document->TextAt(0, 0), std::nullopt);
  for (const auto& [row, col] : {std::pair{1, 0}, {0, 1}, {-1, 0}, {0, -1}}) {
    EXPECT_EQ(document->NumberAt(row, col), std::nullopt) << row << ", " << col;
  }
  EXPECT_EQ(host.LastDocument(), nullptr);
  EXPECT_TRUE(host.Documents().IsEmpty());
  host.SetSheetEditor([](SheetContent&) { return false; });
  EXPECT_EQ(host.looka4dlg(SheetOf(cell, column, column), nullptr), nullptr) << "cancelled";
  EXPECT_FALSE(host.OutputSwitchedOff());
  EXPECT_GT(host.DefaultRowNameWidth(), 0);
}

TEST(StandaloneHostDistributions, AreThoseOfTheLibrary) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_DOUBLE_EQ(host.ChiSquareCdf(2.0, 2.0), 1.0 - std::exp(-1.0));
  EXPECT_DOUBLE_EQ(host.NormalQuantile(0.975, 0.0, 1.0), 1.9599639845400538556);
}

TEST(StandaloneHostDialogs, AreNone) {
  const MemoryTable table = SampleTable();
  StandaloneHost host(table);
  EXPECT_FALSE(host.CreateModelessDialog("CCoxResults"));
  EXPECT_FALSE(host.IsOleAutomation());
  EXPECT_EQ(host.ForwardSequence(1, 2), 0);
}

}  // namespace
}  // namespace orv

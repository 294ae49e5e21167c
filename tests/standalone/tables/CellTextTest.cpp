#include <gtest/gtest.h>

#include <limits>

#include "standalone/tables/CellText.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {
namespace {

TEST(ReadCell, ReadsDecimalNumbers) {
  struct {
    const char* text;
    double value;
  } const cases[] = {
      {"0", 0.0},
      {"5", 5.0},
      {"+5", 5.0},
      {"-5", -5.0},
      {"007", 7.0},
      {"0.1", 0.1},
      {".5", 0.5},
      {"-.5", -0.5},
      {"+.5", 0.5},
      {"5.", 5.0},
      {"1e3", 1000.0},
      {"1E-3", 0.001},
      {"1e+3", 1000.0},
      {"  42\t", 42.0},
      {"\n42\r\n", 42.0},
      {"0.30000000000000004", 0.1 + 0.2},
      {"123456789012345678", 123456789012345680.0},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"2.2250738585072014e-308", std::numeric_limits<double>::min()},
      {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
      {"0e999", 0.0},
  };
  for (const auto& c : cases) {
    const Cell cell = ReadCell(c.text);
    EXPECT_EQ(cell.Kind, CellKind::Number) << c.text;
    EXPECT_EQ(cell.Value, c.value) << c.text;
  }
}

TEST(ReadCell, TellsKindsApart) {
  struct {
    const char* text;
    CellKind kind;
  } const cases[] = {
      {"", CellKind::Missing},
      {"  \t", CellKind::Missing},
      {".", CellKind::Missing},
      {" . ", CellKind::Missing},
      {"NA", CellKind::Missing},
      {"na", CellKind::Missing},
      {"nA", CellKind::Missing},
      {"NaN", CellKind::Missing},
      {"NAN", CellKind::Missing},
      {"nan", CellKind::Missing},
      {"n/a", CellKind::Text},
      {"NA1", CellKind::Text},
      {"-NaN", CellKind::Text},
      {"nan(1)", CellKind::Text},
      {"..", CellKind::Text},
      {"-", CellKind::Text},
      {"+", CellKind::Text},
      {"-.", CellKind::Text},
      {"+-5", CellKind::Text},
      {"--5", CellKind::Text},
      {"5 6", CellKind::Text},
      {"5a", CellKind::Text},
      {"1e", CellKind::Text},
      {"e5", CellKind::Text},
      {"0x10", CellKind::Text},
      {"1d5", CellKind::Text},
      {"1.2.3", CellKind::Text},
      {"drug", CellKind::Text},
      {"1e999", CellKind::OutOfRange},
      {"-1e999", CellKind::OutOfRange},
      {"+1e309", CellKind::OutOfRange},
      {"1e-999", CellKind::OutOfRange},
      {"inf", CellKind::NotFinite},
      {"Inf", CellKind::NotFinite},
      {"-INF", CellKind::NotFinite},
      {"+Infinity", CellKind::NotFinite},
      {"infinite", CellKind::Text},
      {"2024-02-29", CellKind::Date},
      {" 2024-02-29 ", CellKind::Date},
      {"2023-02-29", CellKind::NoSuchDay},
      {"2023-13-01", CellKind::NoSuchDay},
      {"0000-00-00", CellKind::NoSuchDay},
      {"2023-2-9", CellKind::Text},
      {"2023-02-09T10:00", CellKind::Text},
      {"2023/02/09", CellKind::Text},
      {"1,5", CellKind::CommaNumber},
      {"-1,5", CellKind::CommaNumber},
      {"+1,5", CellKind::CommaNumber},
      {",5", CellKind::CommaNumber},
      {"5,", CellKind::CommaNumber},
      {"1,5e-3", CellKind::CommaNumber},
      {"1,5E3", CellKind::CommaNumber},
      {"1.234,5", CellKind::CommaNumber},
      {"1.234.567,89", CellKind::CommaNumber},
      {"1,234", CellKind::CommaNumber},
      {"1,234,567", CellKind::CommaNumber},
      {"1,234.5", CellKind::CommaNumber},
      {"1,234,567.", CellKind::CommaNumber},
      {",", CellKind::Text},
      {"-,", CellKind::Text},
      {"1,5e", CellKind::Text},
      {"1,5x", CellKind::Text},
      {"1,2,3", CellKind::Text},
      {"12.34,5", CellKind::Text},
      {"1234.567,5", CellKind::Text},
      {"1234,567.5", CellKind::Text},
      {"1, 5", CellKind::Text},
      {"a,5", CellKind::Text},
  };
  for (const auto& c : cases) {
    const Cell cell = ReadCell(c.text);
    EXPECT_EQ(static_cast<int>(cell.Kind), static_cast<int>(c.kind)) << "\"" << c.text << "\"";
    if (c.kind != CellKind::Date) {
      EXPECT_EQ(cell.Value, kMissingCode) << "\"" << c.text << "\"";
    }
  }
}

TEST(ReadCell, ReadsADateAsItsDayNumber) {
  EXPECT_EQ(ReadCell("1970-01-02").Value, 1.0);
}

TEST(TrimBlanks, LeavesBlanksInside) {
  EXPECT_EQ(TrimBlanks(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(TrimBlanks(" \n"), "");
  EXPECT_EQ(TrimBlanks(""), "");
}

}  // namespace
}  // namespace orv

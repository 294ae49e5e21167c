#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/XlsxNames.h"
#include "standalone/documents/XmlText.h"

namespace orv {
namespace {

TEST(XlsxSheetNames, ReplaceWhatTheFormatForbids) {
  struct {
    std::string text;
    std::string name;
  } const cases[] = {
      {"estimates", "estimates"},
      {"a[b]:c*d?e/f\\g", "a_b__c_d_e_f_g"},
      {"'quoted'", "_quoted_"},
      {"it's", "it's"},
      {"", "Sheet"},
      {"History", "History_"},
      {"history", "history_"},
      {"a\nb", "a b"},
      {std::string(40, 'x'), std::string(31, 'x')},
      {Emoji + Hebrew, Emoji + Hebrew},
  };
  for (const auto& c : cases) EXPECT_EQ(XlsxSheetNames().Take(c.text), c.name) << c.text;
  std::string wide;
  for (int k = 0; k < 16; ++k) wide += Emoji;
  EXPECT_EQ(Utf16Length(XlsxSheetNames().Take(wide)), 30U) << "no half of a character";
}

TEST(XlsxSheetNames, AreUniqueWhateverTheCapitals) {
  XlsxSheetNames names;
  EXPECT_EQ(names.Take("Survivor"), "Survivor");
  EXPECT_EQ(names.Take("survivor"), "survivor (2)");
  EXPECT_EQ(names.Take("SURVIVOR (2)"), "SURVIVOR (2) (2)");
  EXPECT_EQ(names.Take("survivor"), "survivor (3)");
  EXPECT_EQ(names.Take("history"), "history_");
  EXPECT_EQ(names.Take("history"), "history_ (2)");
  EXPECT_EQ(names.Take(std::string(31, 'x')), std::string(31, 'x'));
  EXPECT_EQ(names.Take(std::string(32, 'x')), std::string(27, 'x') + " (2)");
}

TEST(XlsxColumnName, CountsInLetters) {
  EXPECT_EQ(XlsxColumnName(0), "A");
  EXPECT_EQ(XlsxColumnName(25), "Z");
  EXPECT_EQ(XlsxColumnName(26), "AA");
  EXPECT_EQ(XlsxColumnName(701), "ZZ");
  EXPECT_EQ(XlsxColumnName(702), "AAA");
  EXPECT_EQ(XlsxColumnName(16383), "XFD");
}

}  // namespace
}  // namespace orv

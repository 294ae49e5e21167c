#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/XmlText.h"

namespace orv {
namespace {

TEST(XmlText, EscapesTheSignsOfTheMarkupAndReplacesWhatXmlCannotHold) {
  EXPECT_EQ(XmlText("a < b & \"c\" > 'd'"), "a &lt; b &amp; &quot;c&quot; &gt; 'd'");
  EXPECT_EQ(XmlText("tab\tline\nreturn\r"), "tab\tline\nreturn&#13;");
  EXPECT_EQ(XmlText(std::string("\0\x1b\x7f\xFF", 4)), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(XmlText("\xEF\xBF\xBE"), "\xEF\xBF\xBD") << "U+FFFE";
  EXPECT_EQ(XmlText(Emoji + Hebrew), Emoji + Hebrew);
}

TEST(XmlCellText, EscapesWhatAWorkbookWouldReadAsAnotherCharacter) {
  EXPECT_EQ(XmlCellText("_x0041_"), "_x005F_x0041_");
  EXPECT_EQ(XmlCellText("a_x00e9_b_xABCD_"), "a_x005F_x00e9_b_x005F_xABCD_");
  EXPECT_EQ(XmlCellText("_x41_ _x00G1_ x0041_ _x0041"), "_x41_ _x00G1_ x0041_ _x0041");
}

TEST(XmlCellText, CutsWhatACellCannotHold) {
  EXPECT_EQ(XmlCellText(std::string(32767, 'a')), std::string(32767, 'a'));
  EXPECT_EQ(XmlCellText(std::string(32768, 'a')), std::string(32764, 'a') + "...");
  std::string wide;
  for (int k = 0; k < 16384; ++k) wide += Emoji;  // two characters of UTF-16 each: one too many in all
  const std::string cut = XmlCellText(wide);
  EXPECT_EQ(cut.size(), 16382 * Emoji.size() + 3);
  EXPECT_EQ(Utf16Length(cut), 32767U);
}

TEST(FirstOfUtf16Length, CutsBetweenCharacters) {
  EXPECT_EQ(FirstOfUtf16Length(Emoji + "a", 1), "");
  EXPECT_EQ(FirstOfUtf16Length(Emoji + "a", 2), Emoji);
  EXPECT_EQ(FirstOfUtf16Length(Hebrew, 2), Hebrew.substr(0, 4));
  EXPECT_EQ(FirstOfUtf16Length("abc", 9), "abc");
}

}  // namespace
}  // namespace orv

#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/HtmlText.h"

namespace orv {
namespace {

TEST(HtmlText, EscapesTheSignsOfTheMarkup) {
  EXPECT_EQ(HtmlText("a < b & \"c\" > 'd'"), "a &lt; b &amp; &quot;c&quot; &gt; 'd'");
  EXPECT_EQ(HtmlText("</td><script>alert(1)</script>"), "&lt;/td&gt;&lt;script&gt;alert(1)&lt;/script&gt;");
  EXPECT_EQ(HtmlText("&amp;"), "&amp;amp;");
  EXPECT_EQ(HtmlText(""), "");
}

TEST(HtmlText, IsolatesTextsThatMayRunFromRightToLeft) {
  EXPECT_EQ(HtmlText(Hebrew + "<"), "<bdi>" + Hebrew + "&lt;</bdi>");
  EXPECT_EQ(HtmlText(Emoji), "<bdi>" + Emoji + "</bdi>");
}

TEST(HtmlText, ReplacesWhatNoPageMayHold) {
  EXPECT_EQ(HtmlText(std::string("\0\x1b\xFF", 3)), "<bdi>\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD</bdi>");
  EXPECT_EQ(HtmlText("\xE2\x80\xAE"), "<bdi>\xEF\xBF\xBD</bdi>") << "an override of the direction";
}

TEST(HtmlProgramText, KeepsLineEndsAndTabs) {
  EXPECT_EQ(HtmlProgramText("if (a < b)\n\tf(\"x\");"), "if (a &lt; b)\n\tf(&quot;x&quot;);\n");
}

}  // namespace
}  // namespace orv

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/HtmlStyle.h"
#include "standalone/documents/HtmlWriter.h"

namespace orv {
namespace {

using testing::HasSubstr;
using testing::Not;

// The page without its style sheet.
std::string Written(const RunReport& report, const ResultDocuments& documents) {
  std::string page = WriteHtml(report, documents, {});
  const std::size_t at = page.find(HtmlStyle);
  EXPECT_NE(at, std::string::npos);
  return page.erase(at, HtmlStyle.size());
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;  // the page is too long for a message
}

TEST(WriteHtml, WritesFactsAndEveryKindOfDocument) {
  const std::string expected = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Cox regression</title>
<style></style>
</head>
<body>
<main>
<h1>Cox regression</h1>
<dl>
<dt>Program</dt><dd>orvcox 1.2.3</dd>
<dt>Cases read</dt><dd>228</dd>
<dt>Cases in the analysis</dt><dd>225</dd>
<dt>Complete</dt><dd>163</dd>
<dt>Censored</dt><dd>62</dd>
<dt>Left out: missing values</dt><dd>2</dd>
<dt>Left out: status neither code</dt><dd>1</dd>
<dt>Missing in ph.ecog</dt><dd>1</dd>
<dt>Missing in ph_&lt;karno&gt;</dt><dd>1</dd>
<dt>Columns left out of the fit</dt><dd>sex_2, a*b</dd>
<dt>Converged</dt><dd>no</dd>
<dt>Iterations</dt><dd>50</dd>
<dt>Message</dt><dd>First line. Second &lt;line&gt;.</dd>
</dl>
<section>
<h2>Estimates &amp; &lt;tests&gt;</h2>
<p class="title"> * fixed</p>
<p class="title"># second</p>
<div class="box" tabindex="0">
<table>
<caption>Table 1. Bold: significant.</caption>
<thead>
<tr><th scope="col" class="t">Name</th><th scope="col" class="t">Level</th><th scope="col">P value</th><th scope="col">x|y</th></tr>
</thead>
<tbody>
<tr><th scope="row" class="t m">&lt;b&gt;a&amp;amp;&quot;b&quot;&lt;/b&gt; | `c` *d* _e_ f_g</th><td class="t m"><bdi>)" +
                               Emoji + R"(</bdi></td><td class="m">&lt;.0001</td><td class="m">1.50000</td></tr>
<tr><th scope="row" class="t"><bdi>)" +
                               Hebrew + R"(</bdi></th><td class="t"></td><td></td><td>-0.25000</td></tr>
<tr><th scope="row" class="t">)" +
                               LongLabel + "</th><td class=\"t\"><bdi>a b\xEF\xBF\xBD[2J\xEF\xBF\xBD</bdi></td>" +
                               R"(<td>0.5000</td><td></td></tr>
</tbody>
</table>
</div>
</section>
<section>
<h2>C Code</h2>
<div class="box" tabindex="0"><pre>
if (a &lt; b &amp;&amp; c) {
	puts(&quot;```&quot;);
}
</pre></div>
</section>
<section>
<h2>Survivor function</h2>
<div class="box" tabindex="0">
<table>
<caption>Table 2.</caption>
<thead>
<tr><th scope="col" class="t">Series</th><th scope="col">Points</th><th scope="col">Time from</th><th scope="col">Time to</th><th scope="col">Survival from</th><th scope="col">Survival to</th></tr>
</thead>
<tbody>
<tr><th scope="row" class="t">Pattern 1</th><td>3</td><td>0</td><td>999</td><td>0.500000</td><td>1</td></tr>
</tbody>
</table>
</div>
</section>
</main>
</body>
</html>
)";
  EXPECT_EQ(Written(FullReport(), AwkwardDocuments()), expected);
}

TEST(WriteHtml, NeedsNothingBesidesTheFile) {
  const std::string page = WriteHtml(FullReport(), AwkwardDocuments(), {});
  for (const char* reference : {"http", "src=", "href=", "url(", "@import", "<script", "<link"}) {
    EXPECT_THAT(page, Not(HasSubstr(reference)));
  }
}

TEST(WriteHtml, HasNoHeadingRowOverColumnsWithoutTitles) {
  ResultDocuments documents;
  documents.Add(VeteranSummary());
  EXPECT_THAT(Written({}, documents), Not(HasSubstr("<thead>")));
}

TEST(WriteHtml, CutsATableThatIsTooWideForPaperAndRepeatsTheRowNames) {
  std::vector<SheetColumn> columns;
  std::vector<std::string> names;
  for (int i = 0; i < 40; ++i) {
    names.push_back("name_" + std::to_string(i));
    columns.push_back(NumberColumn("column_" + std::to_string(i), std::vector<double>(40, 0.125 * i - 1.7)));
  }
  ResultDocuments documents;
  documents.Add(Sheet({"Covariance"}, names, columns));
  const std::string page = Written({}, documents);
  EXPECT_TRUE(Holds(page, "<caption>Table 1, part 1 of 4.</caption>"));
  EXPECT_TRUE(Holds(page, "<caption>Table 1, part 4 of 4.</caption>"));
  EXPECT_EQ(CountOf(page, "<th scope=\"row\""), 4 * 40);
  EXPECT_EQ(CountOf(page, "</td>"), 40 * 40 + 4) << "each cell once, and the corner of each part";
  for (const SheetColumn& column : columns) EXPECT_EQ(CountOf(page, ">" + column.Name + "</th>"), 1) << column.Name;
}

TEST(WriteHtml, WritesAnEmptySheetAsItsTitle) {
  ResultDocuments documents;
  documents.Add(Sheet({"Empty"}, {}, {}));
  EXPECT_THAT(Written({}, documents), HasSubstr("<section>\n<h2>Empty</h2>\n</section>\n"));
}

}  // namespace
}  // namespace orv

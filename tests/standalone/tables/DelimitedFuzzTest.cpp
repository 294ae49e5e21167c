// Whatever the bytes are, the reader gives a sound table or a TableError. The sequences are the same in every run.
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <random>
#include <set>
#include <string>

#include "standalone/tables/TableError.h"
#include "standalone/tables/TextTables.h"

namespace orv {
namespace {

using namespace std::string_literals;
using testing::Contents;
using testing::ReadText;
using testing::Refusal;
using testing::Visible;

const std::string kValid =
    "\xEF\xBB\xBFid,\"entered\",arm,dose,\"note, free\"\r\n"
    "1,2020-02-29,drug,1.5,\"said \"\"no\"\"\"\r\n"
    "\r\n"
    "2,,placebo,NA,\"two\r\nlines\"\r\n"
    "3,1969-12-31,drug,-2e-3,M\xC3\xBCller\r\n"
    "4,2021-01-01,,+7,.\r\n"
    "5,2021-01-02,12,.5,\r\n";

// What holds for every table that is read, whatever it was read from.
void ExpectSound(const MemoryTable& table, const std::string& text) {
  ASSERT_GT(table.VariableCount(), 0) << Visible(text);
  ASSERT_GT(table.CaseCount(), 0) << Visible(text);
  std::set<std::string> names;
  for (int v = 1; v <= table.VariableCount(); ++v) {
    const TableVariable& variable = table.Variable(v);
    EXPECT_FALSE(variable.Name.empty()) << Visible(text);
    EXPECT_TRUE(names.insert(variable.Name).second) << Visible(text);
    ASSERT_EQ(static_cast<int>(variable.Values.size()), table.CaseCount()) << Visible(text);
    EXPECT_EQ(variable.Type == VariableType::Text, !variable.Labels.empty()) << Visible(text);
    for (std::size_t i = 0; i < variable.Labels.size(); ++i) {
      EXPECT_EQ(variable.Labels[i].Code, static_cast<double>(i) + 1.0) << Visible(text);
      EXPECT_FALSE(variable.Labels[i].Text.empty()) << Visible(text);
      if (i > 0) {
        EXPECT_LT(variable.Labels[i - 1].Text, variable.Labels[i].Text) << Visible(text);
      }
    }
    std::set<double> used;
    for (const double value : variable.Values) {
      EXPECT_TRUE(std::isfinite(value)) << Visible(text);
      if (value != kMissingCode) used.insert(value);
    }
    if (variable.Type == VariableType::Text) {
      EXPECT_EQ(used.size(), variable.Labels.size()) << Visible(text);
      EXPECT_GE(*used.begin(), 1.0) << Visible(text);
      EXPECT_LE(*used.rbegin(), static_cast<double>(variable.Labels.size())) << Visible(text);
    }
  }
}

// True when the text was read.
bool ReadsOrRefuses(const std::string& text, bool preferTab = false) {
  try {
    ExpectSound(ReadText(text, preferTab), text);
    return true;
  } catch (const TableError& error) {
    const std::string message = error.what();
    EXPECT_TRUE(message.starts_with("trial.csv")) << message;
    EXPECT_TRUE(message.ends_with(".")) << message;
    return false;
  }
}

TEST(DelimitedFuzz, TheTextItStartsFromReads) {
  EXPECT_EQ(Contents(ReadText(kValid)),
            "id number 1 2 3 4 5\n"
            "entered date 18321 M -1 18628 18629\n"
            "arm text 2 3 2 M 1 | 1=12 2=drug 3=placebo\n"
            "dose number 1.5 M -0.002 7 0.5\n"
            "note, free text 2 3 1 M M | 1=M\xC3\xBCller 2=said \"no\" 3=two\r\nlines\n");
}

TEST(DelimitedFuzz, AFileCutAtEveryByteReadsOrIsRefused) {
  int read = 0;
  for (std::size_t size = 0; size < kValid.size(); ++size) read += ReadsOrRefuses(kValid.substr(0, size)) ? 1 : 0;
  // The cuts that leave complete records are among those that read.
  EXPECT_GE(read, 5);
  EXPECT_LT(static_cast<std::size_t>(read), kValid.size() / 2);
}

TEST(DelimitedFuzz, AFileWithAnyByteReplacedReadsOrIsRefused) {
  for (std::size_t i = 0; i < kValid.size(); ++i) {
    for (const char c : "\0\n\r\",;\t \xFF\xC3.-"s) {
      std::string text = kValid;
      text[i] = c;
      ReadsOrRefuses(text);
    }
  }
}

TEST(DelimitedFuzz, MutationsReadOrAreRefused) {
  // Numbers straight from the engine: distributions differ between standard libraries.
  std::mt19937_64 random(20240229);
  const auto below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  const std::string telling = "\n\r\",;\t .-+eE0159NA\xEF\xBB\xBF\xC3\xA4\0x"s;
  const std::string pieces[] = {"1e999", "inf",      "2023-02-30", "1,5",
                                "\"\"",  "\r\n\r\n", "NaN",        "-8.98846567431158e307"};
  int read = 0;
  constexpr int kRounds = 6000;
  for (int round = 0; round < kRounds; ++round) {
    std::string text = kValid;
    for (std::size_t edits = 1 + below(6); edits > 0; --edits) {
      const std::size_t place = below(text.size() + 1);
      switch (below(6)) {
        case 0:
          text.insert(place, 1, telling[below(telling.size())]);
          break;
        case 1:
          if (place < text.size()) text[place] = telling[below(telling.size())];
          break;
        case 2:
          text.erase(place, 1 + below(5));
          break;
        case 3:
          text.insert(place, text.substr(below(text.size() + 1), below(30)));
          break;
        case 4:
          text.insert(place, pieces[below(std::size(pieces))]);
          break;
        default:
          if (place < text.size()) text[place] = static_cast<char>(random() & 0xFFU);
      }
    }
    read += ReadsOrRefuses(text, round % 2 == 1) ? 1 : 0;
  }
  EXPECT_GT(read, kRounds / 100) << "hardly anything was read: the mutations are too wild to test more than messages";
  EXPECT_LT(read, kRounds / 2);
}

TEST(DelimitedFuzz, RandomBytesReadOrAreRefused) {
  std::mt19937_64 random(17);
  const std::string few = "a1,\n\"; \r\t.";
  for (int round = 0; round < 4000; ++round) {
    std::string text(random() % 60, '\0');
    for (char& c : text) c = round % 2 == 0 ? static_cast<char>(random() & 0xFFU) : few[random() % few.size()];
    ReadsOrRefuses(text);
  }
}

TEST(DelimitedFuzz, LineEndsDoNotChangeTheTable) {
  std::mt19937_64 random(5);
  const std::string values[] = {"1", "", "2.5", "x", "1970-01-02", "NA", "\"a,b\"", "7"};
  for (int round = 0; round < 300; ++round) {
    std::string lines[3] = {"a,b,c", "a,b,c", "a,b,c"};
    const char* const ends[3] = {"\n", "\r\n", "\r"};
    for (int line = 0; line < 8; ++line) {
      for (int field = 0; field < 3; ++field) {
        const std::string& value = values[random() % std::size(values)];
        for (int i = 0; i < 3; ++i) lines[i] += (field == 0 ? ends[i] : ",") + value;
      }
    }
    const std::string contents = Contents(ReadText(lines[0]));
    EXPECT_EQ(Contents(ReadText(lines[1])), contents) << Visible(lines[0]);
    EXPECT_EQ(Contents(ReadText(lines[2])), contents) << Visible(lines[0]);
  }
}

// What is read of a text, or what is said against it.
std::string Outcome(const std::string& text, bool preferTab) {
  const std::string refusal = Refusal(text, preferTab);
  return refusal == "(it reads)" ? Contents(ReadText(text, preferTab)) : refusal;
}

// A quote sends a line through the parser of quoted text; without one it is split at once.
TEST(DelimitedFuzz, AQuotedFirstFieldDoesNotChangeTheRestOfItsLine) {
  std::mt19937_64 random(31);
  const std::string values[] = {"1", "",     "2.5",     " x ",   "1970-01-02", "NA", "\t7",     "7\t", " ",
                                ".", "a  b", "-1e-300", "1e999", "\xC3\xA4",   "'",  "two\tof", "+3"};
  int read = 0;
  for (int round = 0; round < 3000; ++round) {
    const char delimiter = ",;\t"[round % 3];
    std::string plain = std::string("k") + delimiter + "a" + delimiter + "b";
    std::string quoted = std::string("\"k\"") + delimiter + "a" + delimiter + "b";
    const char* const ends[] = {"\n", "\r\n", "\r", "\n \t\n", "\r\n\r\n"};
    for (int line = 0; line < 5; ++line) {
      const char* const end = ends[random() % std::size(ends)];
      // Now and then a field too few or too many.
      const std::uint64_t odd = random() % 60;
      const int fields = odd == 0 ? 1 : odd == 1 ? 3 : 2;
      std::string rest;
      for (int field = 0; field < fields; ++field) rest += delimiter + values[random() % std::size(values)];
      plain += end + std::to_string(line) + rest;
      quoted += std::string(end) + "\"" + std::to_string(line) + "\"" + rest;
    }
    if (random() % 2 == 0) {
      plain += "\n";
      quoted += "\n";
    }
    const std::string outcome = Outcome(plain, delimiter == '\t');
    read += outcome.starts_with("k ") ? 1 : 0;
    ASSERT_EQ(Outcome(quoted, delimiter == '\t'), outcome) << Visible(plain);
  }
  EXPECT_GT(read, 1000);
  EXPECT_LT(read, 2900);
}

}  // namespace
}  // namespace orv

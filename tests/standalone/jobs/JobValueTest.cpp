#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/jobs/JobValue.h"
#include "standalone/jobs/JobWording.h"

namespace orv {
namespace {

TEST(JobValue, EntriesKeepTheOrderAndTheLinesOfTheFile) {
  const JobValue::Table top = ParseJobText("\xEF\xBB\xBFz = 1\r\n[b]\nq = 2\na = { y = 1, x = 2 }\n", "t.toml");
  ASSERT_EQ(top.size(), 2u);
  EXPECT_EQ(top[0].Name, "z");
  EXPECT_EQ(top[0].Line, 1u);
  EXPECT_EQ(top[1].Name, "b");
  const JobValue::Table& section = *top[1].Value.As<JobValue::Table>();
  ASSERT_EQ(section.size(), 2u);
  EXPECT_EQ(section[0].Name, "q");
  EXPECT_EQ(section[0].Line, 3u);
  EXPECT_EQ(section[1].Name, "a");
  const JobValue::Table& inner = *section[1].Value.As<JobValue::Table>();
  EXPECT_EQ(inner[0].Name, "y");
  EXPECT_EQ(inner[1].Name, "x");
}

TEST(JobValue, ItemsOfAListHaveLinesOfTheirOwn) {
  const JobValue::Table top = ParseJobText("a = [\n  1,\n  2.5,\n  \"x\",\n  true,\n  1979-05-27,\n]\n", "t.toml");
  const JobValue::List& list = *top[0].Value.As<JobValue::List>();
  ASSERT_EQ(list.size(), 5u);
  for (std::size_t k = 0; k < list.size(); ++k) EXPECT_EQ(list[k].Line, k + 2);
  EXPECT_EQ(*list[0].As<std::int64_t>(), 1);
  EXPECT_EQ(*list[1].As<double>(), 2.5);
  EXPECT_EQ(*list[2].As<std::string>(), "x");
  EXPECT_TRUE(*list[3].As<bool>());
  EXPECT_NE(list[4].As<JobValue::Date>(), nullptr);
}

TEST(JobValue, ASectionMayStandBeforeTheOneThatHoldsIt) {
  const JobValue::Table top = ParseJobText("[a.b]\nx = 1\n[a]\ny = 2\n", "t.toml");
  ASSERT_EQ(top.size(), 1u);
  EXPECT_EQ(top[0].Value.As<JobValue::Table>()->size(), 2u);
}

TEST(JobValue, AFaultIsToldWithItsLine) {
  struct {
    const char* Text;
    const char* Start;
  } const cases[] = {
      {"\nTable = trial.csv\n", "t.toml:2: this is not TOML: "},
      {"[a\n", "t.toml:1: this is not TOML: "},
      {"[\x01\n", "t.toml:1: this is not TOML: "},
      {"a = \"\n", "t.toml:1: this is not TOML: "},
      {"a = \"\xFF\"\n", "t.toml:1: this is not TOML: "},
      {"time,status\n5,1\n", "t.toml:1: this is not TOML: "},
  };
  for (const auto& c : cases) {
    try {
      ParseJobText(c.Text, "t.toml");
      ADD_FAILURE() << "taken: " << c.Text;
    } catch (const JobError& error) {
      const std::string message = error.what();
      EXPECT_EQ(message.substr(0, std::string(c.Start).size()), c.Start) << message;
      EXPECT_NE(message.find("texts stand in quotes"), std::string::npos) << message;
    }
  }
}

TEST(JobValue, WhatIsWrittenWellAndStillWrongIsToldWithoutAHintOnWriting) {
  const std::string key = "this key is there already. Take one of the two out.";
  const std::string table = "this section or table is there already. Write all that belongs to it in one place.";
  struct {
    const char* Text;
    std::string Message;
  } const cases[] = {
      {"a = 1\na = 2\n", "t.toml:2: " + key},
      {"a = true\n\"a\" = true\n", "t.toml:2: " + key},
      {"a = { b = [1], b = [2] }\n", "t.toml:1: " + key},
      {"[a]\nb = 1\n[a]\nc = 2\n", "t.toml:3: " + table},
      {"[a]\nb.c = 1\n[a.b]\nd = 2\n", "t.toml:3: " + table},
      {"a = { b = 1 }\na.c = 2\n", "t.toml:2: " + table},
      {"a.b = 1\na = 2\n", "t.toml:2: " + table},
      {"a = 99999999999999999999\n", "t.toml:1: the number 99999999999999999999 is out of range."},
      {"a = 0xFFFFFFFFFFFFFFFFF\n", "t.toml:1: the number 0xFFFFFFFFFFFFFFFFF is out of range."},
      {"a = 1e999\n", "t.toml:1: the number 1e999 is out of range."},
  };
  for (const auto& c : cases) {
    try {
      ParseJobText(c.Text, "t.toml");
      ADD_FAILURE() << "taken: " << c.Text;
    } catch (const JobError& error) {
      EXPECT_EQ(error.what(), c.Message);
    }
  }
}

TEST(JobValue, LettersBeyondAsciiStandInTexts) {
  const JobValue::Table top =
      ParseJobText("\"gr\xC3\xB6\" = \"\"\"a \\\n  \xC3\xA9t\xC3\xA9 \xEF\xBB\xB2\"\"\" # \xC3\xA9\n", "t.toml");
  EXPECT_EQ(top[0].Name, "gr\xC3\xB6");
  EXPECT_EQ(*top[0].Value.As<std::string>(), "a \xC3\xA9t\xC3\xA9 \xEF\xBB\xB2");
  for (const char* text : {"gr\xC3\xB6 = 1\n", "\xEF\xBB\xB2\n", "a = \xC3\xA9\n", "a = [1 \xC3\xA9]\n"}) {
    EXPECT_THROW(ParseJobText(text, "t.toml"), JobError) << text;
  }
}

TEST(JobValue, KeysOfEndlessPartsAreRefused) {
  const auto repeated = [](const std::string& part) {
    std::string text;
    for (int k = 0; k < 100000; ++k) text += part;
    return text;
  };
  const std::string keys[] = {repeated("a.") + "a = 1", "[" + repeated("a . ") + "a]", repeated("\"a\".") + "a = 1",
                              repeated("'#'.") + "a = 1", "b = { " + repeated("a.") + "a = 1 }"};
  for (const std::string& key : keys) {
    try {
      ParseJobText("x = \"\"\"\n\\\"\"\"\"\n" + key + "\n", "t.toml");
      ADD_FAILURE() << "taken: " << key.substr(0, 20);
    } catch (const JobError& error) {
      const std::string message = error.what();
      EXPECT_TRUE(message.starts_with("t.toml:3: this is not TOML: a key has too many parts")) << message;
    }
  }
}

TEST(JobValue, DotsInTextsCommentsAndNumbersAreNoParts) {
  const std::string dots(200, '.');
  std::string numbers;
  for (int k = 0; k < 200; ++k) numbers += "0.5, ";
  const JobValue::Table top = ParseJobText(
      "a = \"" + dots + "\" # " + dots + "\nb = '" + dots + "'\nc = [" + numbers + "]\nd = \"\\\"" + dots + "\"\n",
      "t.toml");
  EXPECT_EQ(top.size(), 4u);
}

}  // namespace
}  // namespace orv

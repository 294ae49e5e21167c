#include <gtest/gtest.h>

#include "standalone/documents/NameRegistry.h"

namespace orv {
namespace {

TEST(NameRegistry, GivesTheKeyOfTheNamesFnv1aHash) {
  // Computed apart from this program, from the definition of FNV-1a with 64 bits.
  NameRegistry names;
  EXPECT_EQ(names.Get8CharHash("Parameter Estimate"), "\x01Gn7aY2I");
  EXPECT_EQ(names.Get8CharHash("Hazard Ratio"), "\x01iUotd9t");
  EXPECT_EQ(names.Get8CharHash(""), "\x01lMiIESO");
}

TEST(NameRegistry, GivesTheSameKeyAgainAndInAnyOrder) {
  NameRegistry first;
  const std::string age = first.Get8CharHash("age at first diagnosis");
  const std::string karno = first.Get8CharHash("Karnofsky performance score");
  NameRegistry second;
  EXPECT_EQ(second.Get8CharHash("Karnofsky performance score"), karno);
  EXPECT_EQ(second.Get8CharHash("age at first diagnosis"), age);
  EXPECT_EQ(second.Get8CharHash("age at first diagnosis"), age);
}

TEST(NameRegistry, ExpandsItsKeysOnly) {
  NameRegistry names;
  const std::string key = names.Get8CharHash("Karnofsky performance score");
  EXPECT_EQ(key.size(), 8U);
  EXPECT_EQ(names.Expand(key), "Karnofsky performance score");
  const std::string unknownKey = std::string(1, '\x01') + "AAAAAAA";
  for (const std::string& text :
       {std::string(), std::string("age"), std::string("Karnofsky performance score"), unknownKey}) {
    EXPECT_EQ(names.Expand(text), text);
  }
  EXPECT_EQ(names.Expand(key + " "), key + " ");
}

TEST(NameRegistry, KeepsTwoNamesApartWhoseHashesMeet) {
  // Found by search: the low 42 bits of the two hashes agree. The second key was computed apart from this program.
  const std::string one = "biomarker_bdwgjegwnn";
  const std::string other = "biomarker_cekvxlkdhg";
  NameRegistry alone;
  ASSERT_EQ(NameRegistry().Get8CharHash(one), alone.Get8CharHash(other));

  NameRegistry names;
  const std::string oneKey = names.Get8CharHash(one);
  const std::string otherKey = names.Get8CharHash(other);
  EXPECT_EQ(oneKey,
            "\x01"
            "fPkcn9t");
  EXPECT_EQ(otherKey,
            "\x01"
            "6IVKHz5");
  EXPECT_EQ(names.Expand(oneKey), one);
  EXPECT_EQ(names.Expand(otherKey), other);
  EXPECT_EQ(names.Get8CharHash(one), oneKey);
  EXPECT_EQ(names.Get8CharHash(other), otherKey);
}

TEST(NameRegistry, LeavesItsOwnKeysAsTheyAre) {
  NameRegistry names;
  const std::string key = names.Get8CharHash("Karnofsky performance score");
  EXPECT_EQ(names.Get8CharHash(key), key);
  EXPECT_EQ(names.Expand(key), "Karnofsky performance score");
}

}  // namespace
}  // namespace orv

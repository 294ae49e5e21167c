#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "standalone/documents/ZipArchive.h"
#include "support/ZipListing.h"

namespace orv {
namespace {

using testing::ListZip;

TEST(PackZip, KeepsPartsInTheirOrder) {
  const std::string bytes = PackZip({TextPart("b/one.xml", "1\n"), TextPart("a.xml", "2"), TextPart("empty", "")});
  EXPECT_EQ(ListZip(bytes), "== b/one.xml\n1\n== a.xml\n2\n== empty\n");
}

TEST(PackZip, GivesTheSameBytesAgain) {
  const std::vector<ZipPart> parts = {TextPart("a", "text"), TextPart("b", std::string(100000, 'x'))};
  const std::string bytes = PackZip(parts);
  EXPECT_EQ(PackZip(parts), bytes);
  EXPECT_LT(bytes.size(), 1000U) << "it is compressed";
}

TEST(PackZip, JoinsThePiecesOfALargePart) {
  constexpr int Pieces = 3000;
  const ZipPart part = {"large", [] {
                          return [number = 0]() mutable {
                            return number < Pieces ? std::to_string(number++) + std::string(777, ' ') : std::string();
                          };
                        }};
  std::string expected = "== large\n";
  for (int number = 0; number < Pieces; ++number) expected += std::to_string(number) + std::string(777, ' ');
  EXPECT_TRUE(ListZip(PackZip({part})) == expected + "\n");
}

TEST(PackZip, PassesOnThatMemoryIsOut) {
  const ZipPart part = {"failing", []() -> PieceReader {
                          return [count = 0]() mutable -> std::string {
                            if (++count > 3) throw std::bad_alloc();
                            return "piece";
                          };
                        }};
  EXPECT_THROW(PackZip({TextPart("a", "text"), part}), std::bad_alloc);
}

TEST(ListZip, TellsADamagedFile) {
  std::string bytes = PackZip({TextPart("a.txt", "a text that is stored in some way, long enough to be hurt")});
  bytes[45] = static_cast<char>(bytes[45] ^ 0x10);
  const std::string listing = ListZip(bytes);
  EXPECT_EQ(listing.find("long enough to be hurt"), std::string::npos) << listing;
  EXPECT_EQ(ListZip("no archive").substr(0, 13), "(no ZIP file:");
}

}  // namespace
}  // namespace orv

#include "reference/ReferenceComparison.h"

#include <iostream>

namespace orv::testing {

namespace {

class PrintDigits : public ::testing::Environment {
 public:
  void TearDown() override { Digits().Print(std::cout); }
};

const auto* const kPrintDigits = ::testing::AddGlobalTestEnvironment(new PrintDigits);

}  // namespace

AgreedDigits& Digits() {
  static AgreedDigits digits;
  return digits;
}

}  // namespace orv::testing

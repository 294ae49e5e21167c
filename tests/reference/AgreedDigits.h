// How many digits agree with a reference, per quantity: the worst over all cases.
#pragma once

#include <iosfwd>
#include <map>
#include <string>

namespace orv::testing {

// The log relative error -log10(|value - expected| / scale), cut to 0..15.95, where two doubles agree in full.
double DigitsAgreed(double value, double expected, double scale);

class AgreedDigits {
 public:
  void Add(const std::string& quantity, const std::string& where, double digits);
  void Print(std::ostream& out) const;

 private:
  struct Worst {
    double Digits = 0.0;
    std::string Where;
    int Count = 0;
  };
  std::map<std::string, Worst> m_worst;
};

}  // namespace orv::testing

// LatestCase: what a benchmark prepares, kept for its further runs.
#pragma once

#include <memory>
#include <string>
#include <utility>

namespace orv::bench {

// A benchmark function is called once for every run of a case. What it prepares is made and checked at the first call
// and freed when the next case comes, so that no two large tables are held at a time.
template <typename Prepared>
class LatestCase {
 public:
  // `make` returns a std::unique_ptr<Prepared>; what it throws reaches the caller, and nothing is kept.
  template <typename Make>
  Prepared& Get(const std::string& name, Make make) {
    if (m_name != name) {
      m_name.clear();
      m_prepared.reset();
      m_prepared = make();
      m_name = name;
    }
    return *m_prepared;
  }

 private:
  std::string m_name;
  std::unique_ptr<Prepared> m_prepared;
};

}  // namespace orv::bench

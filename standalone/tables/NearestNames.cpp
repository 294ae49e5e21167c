#include "standalone/tables/NearestNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orv {
namespace {

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
  // Three rows of the alignment table: a swap of neighbours looks two rows back.
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> current(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    const char ca = LowerCase(a[i - 1]);
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const char cb = LowerCase(b[j - 1]);
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + (ca == cb ? 0 : 1)});
      if (i > 1 && j > 1 && ca == LowerCase(b[j - 2]) && cb == LowerCase(a[i - 2]))
        current[j] = std::min(current[j], beforeLast[j - 2] + 1);
    }
    std::swap(beforeLast, last);
    std::swap(last, current);
  }
  return last[b.size()];
}

std::vector<std::string> NearestNames(std::string_view name,
                                      const std::vector<std::string_view>& candidates,
                                      std::size_t count) {
  std::vector<std::pair<std::size_t, std::size_t>> ranked;  // distance, place among the candidates
  ranked.reserve(candidates.size());
  for (std::size_t i = 0; i < candidates.size(); ++i) ranked.emplace_back(EditDistance(name, candidates[i]), i);
  const std::size_t kept = std::min(count, ranked.size());
  std::partial_sort(ranked.begin(), ranked.begin() + static_cast<std::ptrdiff_t>(kept), ranked.end());
  std::vector<std::string> names;
  names.reserve(kept);
  for (std::size_t i = 0; i < kept; ++i) names.emplace_back(candidates[ranked[i].second]);
  return names;
}

}  // namespace orv

#include "standalone/tables/MessageExcerpt.h"

#include <fmt/format.h>

namespace orv {
namespace {

constexpr std::size_t kLongestExcerpt = 40;  // bytes of a value that a message shows
constexpr std::size_t kNamesShown = 8;       // a longer list of names ends in "..."

}  // namespace

std::string Excerpt(std::string_view text) {
  std::size_t size = text.size();
  if (size > kLongestExcerpt) {
    size = kLongestExcerpt;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) --size;
  }
  std::string excerpt(text.substr(0, size));
  for (char& c : excerpt) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return size < text.size() ? excerpt + "..." : excerpt;
}

std::string NameList(const std::vector<std::string>& names) {
  std::string list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += ", ";
    if (i == kNamesShown) return list + "...";
    list += Excerpt(names[i]);
  }
  return list;
}

std::string CountOf(std::uint64_t number, std::string_view thing) {
  return fmt::format("{} {}{}", number, thing, number == 1 ? "" : "s");
}

}  // namespace orv

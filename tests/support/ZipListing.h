// ZipListing: what a ZIP file holds, as a text that can be compared.
#pragma once

#include <string>

namespace orv::testing {

// For each part, in its order, a line "== NAME" and the content; a line break is added to a content that ends in none.
// What is no ZIP file, or is damaged, gives a text that says so.
std::string ListZip(const std::string& bytes);

}  // namespace orv::testing

// ZipArchive: named parts packed into one ZIP file, in memory.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orv {

// The content of a part, piece by piece: each call gives the next piece, and an empty one after the last.
using PieceReader = std::function<std::string()>;

struct ZipPart {
  std::string Name;
  // Starts the content anew. It is read twice, once for its size, so that no large part ever stands in memory as a
  // whole. Both times it must give the same bytes.
  std::function<PieceReader()> Start;
};

// A part whose content is at hand.
ZipPart TextPart(std::string name, std::string content);

// The ZIP file, compressed, the parts in their order, all of them dated 1980-01-01, so that it holds no clock. Throws
// OutputError when the parts cannot be packed, and std::bad_alloc.
std::string PackZip(const std::vector<ZipPart>& parts);

}  // namespace orv

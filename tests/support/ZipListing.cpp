#include "support/ZipListing.h"

#include <zip.h>

namespace orv::testing {
namespace {

std::string ReadPart(zip_t* archive, zip_uint64_t index) {
  zip_stat_t status;
  zip_file_t* const file = zip_fopen_index(archive, index, 0);
  if (file == nullptr || zip_stat_index(archive, index, 0, &status) != 0) return "(unreadable)\n";
  std::string content(status.size + 1, '\0');  // one byte more, so that the check sum is reached and tested
  const zip_int64_t count = zip_fread(file, content.data(), content.size());
  const bool isWhole = zip_fclose(file) == 0 && count == static_cast<zip_int64_t>(status.size);
  if (!isWhole) return "(damaged)\n";
  content.resize(status.size);
  return content;
}

}  // namespace

std::string ListZip(const std::string& bytes) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* const source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  zip_t* const archive = zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error);
  if (archive == nullptr) {
    const std::string text = std::string("(no ZIP file: ") + zip_error_strerror(&error) + ")\n";
    zip_source_free(source);
    zip_error_fini(&error);
    return text;
  }
  std::string listing;
  for (zip_int64_t k = 0; k < zip_get_num_entries(archive, 0); ++k) {
    const auto index = static_cast<zip_uint64_t>(k);
    listing += std::string("== ") + zip_get_name(archive, index, 0) + '\n' + ReadPart(archive, index);
    if (listing.back() != '\n') listing += '\n';
  }
  zip_discard(archive);
  zip_error_fini(&error);
  return listing;
}

}  // namespace orv::testing

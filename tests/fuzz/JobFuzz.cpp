// Any bytes are a job or refused with a message that names the file; a job can be written and comes back as it was.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Require.h"
#include "standalone/jobs/ReadJob.h"
#include "standalone/jobs/WriteJob.h"

namespace orv::fuzz {

namespace {

std::optional<ReadJobResult> JobOf(std::string_view text) {
  try {
    return ReadJob(text, "trial.toml");
  } catch (const JobError& error) {
    const std::string_view message = error.what();
    Require(message.starts_with("trial.toml:") && message.size() > std::string_view("trial.toml: ").size(),
            "a refusal names the file");
    return std::nullopt;
  }
}

}  // namespace

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orv::fuzz;
  const auto read = JobOf({reinterpret_cast<const char*>(data), size});
  if (!read) return 0;
  const std::string written = orv::WriteJob(read->Read);
  const auto again = JobOf(written);
  Require(again.has_value(), "a job that was written is a job");
  Require(again->Read == read->Read, "a job comes back as it was");
  Require(orv::WriteJob(again->Read) == written, "the same job is written in the same bytes");
  Require(!read->Wording.Sentence("--ties efron: " + read->Read.Table).empty(), "a sentence stays one");
  return 0;
}

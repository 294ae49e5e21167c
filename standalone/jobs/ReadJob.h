// ReadJob: a job file, read and checked as far as that is possible without the table.
#pragma once

#include <string>
#include <string_view>

#include "standalone/jobs/Job.h"
#include "standalone/jobs/JobWording.h"

namespace orv {

struct ReadJobResult {
  Job Read;
  JobWording Wording;  // for what is said about the job from here on
};

// Throws JobError with the file, the line and the way out, for what is no TOML, for a key that is unknown or
// given a value that it does not take, and for what CheckDefinition and CheckResultDefinition refuse.
ReadJobResult ReadJob(std::string_view text, const std::string& file);

// The same from a file. Throws TableError when it cannot be read.
ReadJobResult ReadJobFile(const std::string& file);

}  // namespace orv

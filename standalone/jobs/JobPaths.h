// JobPaths: names of files in a job are relative to its folder, so that the folder can be moved.
#pragma once

#include <string>

#include "standalone/jobs/Job.h"

namespace orv {

// A job as read from `file`, with the names as seen from the working folder.
Job FromFolderOf(const std::string& file, Job job);

// A job with names as seen from the working folder, as it is written to `file`. Absolute names stay absolute.
Job ToFolderOf(const std::string& file, Job job);

}  // namespace orv

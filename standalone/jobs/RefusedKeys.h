// RefusedKeys: where a value stands that the module has refused. The module's texts do not name keys.
#pragma once

#include <string>

#include "standalone/jobs/JobWording.h"

namespace orv {

// "trial.toml: pToEnter is set on line 5.", for a text of the module (TextIds.h) that can be about certain keys alone
// and a job that has them; otherwise empty.
std::string NoteOnRefusedKeys(const JobWording& wording, int textId);

}  // namespace orv

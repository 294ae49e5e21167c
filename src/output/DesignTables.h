// The table of design terms.
#pragma once

namespace orv {

class CCoxData;

// One row per coefficient: its number, and for each variable of its term the name, the level of a factor and, under the
// restricted codings, the reference level. Needs a built design.
void ShowDesignTerms(const CCoxData& data);

}  // namespace orv

// The module's string table: every text that it shows, by id.
#pragma once

#include <string_view>

namespace orv {

// The text with this id, or an empty string when there is none. See host/TextIds.h for the ids.
const char* LoadModuleText(int id);

// The id of a text as it was shown, with numbers or a label put into it; 0 when it is none of the table's. For hosts
// that report messages with their ids.
int FindModuleTextId(std::string_view shown);

}  // namespace orv

// The module's own instance handle: how the host reaches the texts that the module carries.
#pragma once

namespace orv {

struct ModuleInstance {
  // The text with this id, or an empty string when the module has none. The text lives as long as the module.
  const char* (*LoadText)(int id) = nullptr;
};

}  // namespace orv

// Effects as the units of model building: an effect enters or leaves with all its columns.
#pragma once

#include <string>

namespace orv {

class CCoxData;
class CCoxFit;

// The consecutive design columns of an effect, from 0. Last is First - 1 for an effect without columns.
struct EffectColumns {
  int First = 0;
  int Last = -1;

  int Count() const { return Last - First + 1; }
};

// Effects count from 1 in design order.
EffectColumns ColumnsOfEffect(const CCoxData& data, int effect);
// The effect as the user wrote it.
std::string EffectText(const CCoxFit& fit, int effect);
// True when the effect is held at its start values.
bool IsFixedEffect(const CCoxData& data, int effect);
// How many effects the options force into the model: the first ones of the design.
int ForcedEffectCount(const CCoxFit& fit);

}  // namespace orv

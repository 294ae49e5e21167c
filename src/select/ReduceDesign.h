// The reduction of a design to the effects that a selection chose.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// Cuts the case table, the design and the options down to the chosen effects and what they use, so that a fit of all
// effects is then one of the model selected. The backups of the options keep the full model.
//   effects  those in the model, from 1, in any order; their columns are m_ActiveColumns
// Leaves m_ActiveColumns ascending, with the columns' numbers of the full design, and a copy of it in m_KeptColumns.
// The table is cut in place, so it is never held twice.
void ReduceDesign(CCoxFit& fit, const std::vector<int>& effects);

}  // namespace orv

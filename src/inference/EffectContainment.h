// Containment between effects: an effect is contained in a higher-order one that holds all of its variables.
#pragma once

namespace orv {

class CCoxFit;
struct CoxDesignColumn;

// True when all variables of effect A occur in effect B. Effects count from 0.
bool EffectContains(const CCoxFit& fit, int effectA, int effectB);

// The same on the first column record of each effect.
bool TermContains(const CoxDesignColumn& a, const CoxDesignColumn& b);

}  // namespace orv

// Marginality between effects: an effect is marginal to a higher-order one that adds factors to it and nothing else.
#pragma once

namespace orv {

class CCoxFit;
struct CoxDesignColumn;

// True when effect B has the same covariates as effect A, in the same order, and all of A's factors and more. Effects
// count from 0. Time expressions count among the factors here. Other than EffectContains, which decides about hazard
// ratios and lets B have further covariates: those are other functions of the cases, not finer groups of them.
bool EffectMarginalTo(const CCoxFit& fit, int effectA, int effectB);

// The same on the first column record of each effect.
bool TermMarginalTo(const CoxDesignColumn& a, const CoxDesignColumn& b);

}  // namespace orv

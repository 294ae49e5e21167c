// Best subsets: of the models of every size, the one with the largest score chi-square at beta = 0. No model is fitted
// during the search. Every effect is a single column here.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// How many effects beyond the forced ones the exhaustive search can compare: a subset is a mask of 32 bits.
inline constexpr int kMostFreeEffects = 31;

// True when the bounded search serves: nothing is forced or held, and no column is a product.
bool HasBoundedSubsets(const CCoxFit& fit);

// The effects that are not forced.
int FreeEffectCount(const CCoxFit& fit);

// Scores every subset of the effects that are not forced; the forced ones are in all of them. Leaves in m_SubsetScores
// and m_SubsetMembers the best subset for each number of columns, of equal scores the first in the order of the masks.
// A column that says nothing beyond others of its subset, of which the later ones count, is not a member. The subset of
// all columns held at their start values is passed over; in all others those columns are marked as members.
// 2^k - 1 subsets for k effects that are not forced, with one sweep for each. A user's cancel ends the search
// with the rows found so far. Throws NumericalFailure.
// REQUIRES: at most kMostFreeEffects effects are not forced.
void BestSubsetsAllModels(CCoxFit& fit);

// The same by leaps and bounds: a family of subsets is passed over when the score of the set that holds them all is no
// better than what is found already, since a score cannot grow when a column leaves. Of equal scores the first found
// stays. Sizes for which nothing was found before a cancel or a numerical failure have no row. The columns are looked
// at in the order of what each adds to all others, the largest first, which makes the families that are passed over
// large; the work list holds at most p^2 nodes. Method: Furnival and Wilson, Technometrics 16 (1974) 499-511; for score
// tests Lawless and Singhal, Biometrics 34 (1978) 318-327.
void BestSubsetsBounded(CCoxFit& fit);

// What the bounded search does with the node at the front of m_SubsetQueue: appends one node for each way of leaving
// one of its highest columns out, scores them and offers their sets. Child i leaves out the (i + 1)-th highest column
// of SetB; its SetA lacks the i highest ones.
//   children  how many, from the first one
void ExpandSubsetNode(CCoxFit& fit, int children);
// The same without the first `skipped` children, whose families have only sizes at which nothing can be gained.
void ExpandSubsetNodeSkipping(CCoxFit& fit, int children, int skipped);

}  // namespace orv

#pragma once
struct DynsConstraints;

/// Whether the row's error, velocity, bounds, softness and Jacobian are finite.
[[nodiscard]] bool DynsRowIsFinite(const DynsConstraints& c, int firstBlock, int nBlocks, int row);
/// Takes a row out of its partition: no Jacobian, bounds of zero width, and a diagonal of 1, so that
/// neither the matrix nor another row sees it and its lambda is 0.
void DynsNeutralizeRow(DynsConstraints& c, int firstBlock, int nBlocks, int row);
/// Does so with each row that would carry something not finite into the solve: of its own, or of one
/// of its bodies by way of rhs0, where every momentum, load and inverse inertia shows. A whole
/// partition would be void otherwise, since one NaN in a factor spreads to all that follow.
void DynsNeutralizeBadRows(DynsConstraints& c, double* rhs0);

#ifndef NU_ENGINE_CHAINS_SELF_CONTACT_H
#define NU_ENGINE_CHAINS_SELF_CONTACT_H

#include "nu/engine/chains/piece_chain.h"

namespace nu::engine::chains {

// Whether two pieces come as close as `tol` that do not follow each other, or ones that do, away from the point they
// share: they fold back, or have left each other by more than `tol` in between. The last piece of a closed chain is
// followed by the first one. Pieces no longer than `tol` are passed over. About n log n.
bool TouchesItself(const PieceChain& chain, double tol);

}  // namespace nu::engine::chains

#endif

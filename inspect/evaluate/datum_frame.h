#ifndef NU_INSPECT_DATUM_FRAME_H
#define NU_INSPECT_DATUM_FRAME_H

#include <vector>

#include "evaluate/geometry.h"
#include "evaluate/part_result.h"

// The coordinate system that datum features establish one after the other, each within the freedom that those before
// leave (ISO 5459):
//
// - the first gives z: the normal of a plane or the direction of an axis; and the origin as far as it is in it;
// - a plane that stands on z, or lies along it, gives the direction x across itself. It is fitted again with that
//   constraint, by its criterion: as a line through its points seen along z;
// - a plane across z gives the origin along z, again under the constraint;
// - an axis along z gives the origin in x and y, a cylinder by the circle through its points seen along z; an axis
//   across z gives the direction x and the origin in y;
// - a centre gives the origin, and the direction x where the origin in x and y is known already.
//
// z and x point to the side where the plan's z_towards and x_towards lie, else to that of the other features in the
// mean. Without z_towards, a third plane that stands on the first and along x settles z: y points to the other
// features as well, so that they have positive coordinates from both planes.
//
// `features` are those of the plan, null where one failed. Throws FitFailure: a datum failed, or fixes nothing that is
// still free, or the side on which an axis is positive is not clear.
DatumFrameResult BuildDatumFrame(const DatumFramePlan& frame, const PartPlan& plan,
                                 const std::vector<const FeatureGeometry*>& features);

#endif

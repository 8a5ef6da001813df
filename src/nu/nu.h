#ifndef NU_NU_H
#define NU_NU_H

// The whole library in one include.

#include "nu/curves/bounded_curve.h"
#include "nu/curves/circle.h"
#include "nu/curves/curve.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/interval.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/foundation/object.h"
#include "nu/foundation/object_array.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/cartesian_coord.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/line.h"
#include "nu/geometry/nonlinear_geometry.h"
#include "nu/geometry/plane.h"
#include "nu/geometry/point.h"
#include "nu/geometry/point_array.h"
#include "nu/linalg/complex.h"
#include "nu/linalg/complex_array.h"
#include "nu/linalg/complex_matrix.h"
#include "nu/linalg/complex_polar.h"
#include "nu/linalg/complex_vector.h"
#include "nu/linalg/linear_equ_sys.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "nu/numerics/polynomial.h"
#include "nu/surfaces/sphere.h"
#include "nu/surfaces/surface.h"

#endif

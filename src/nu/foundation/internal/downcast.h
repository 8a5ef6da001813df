#ifndef NU_FOUNDATION_INTERNAL_DOWNCAST_H
#define NU_FOUNDATION_INTERNAL_DOWNCAST_H

#include <typeinfo>

#include "nu/foundation/object.h"
#include "nu/fwd.h"

namespace nu::internal {

// The code that the constructors of a class set.
template<class T>
inline constexpr CNuObject::ENuObjectType kTypeOf = CNuObject::NuTypeNone;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuPoint> = CNuObject::NuTypePoint;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuLine> = CNuObject::NuTypeLine;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuPlane> = CNuObject::NuTypePlane;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuCircle> = CNuObject::NuTypeCircle;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuEllipse> = CNuObject::NuTypeEllipse;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuHyperbola> = CNuObject::NuTypeHyperbola;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuParabola> = CNuObject::NuTypeParabola;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuPolyline> = CNuObject::NuTypePolyline;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuLineSegment> = CNuObject::NuTypeLineSegment;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuCircularArc> = CNuObject::NuTypeCircularArc;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuCompositeCurve> = CNuObject::NuTypeCompositeCurve;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuCylSurf> = CNuObject::NuTypeCylSurf;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuConSurf> = CNuObject::NuTypeConSurf;
template<>
inline constexpr CNuObject::ENuObjectType kTypeOf<CNuSphSurf> = CNuObject::NuTypeSphSurf;

template<class T>
constexpr bool IsTypeOf(CNuObject::ENuObjectType type) {
  static_assert(kTypeOf<T> != CNuObject::NuTypeNone);
  return type == kTypeOf<T>;
}
template<>
constexpr bool IsTypeOf<CNuBoundedCurve>(CNuObject::ENuObjectType type) {
  return IsTypeOf<CNuPolyline>(type) || IsTypeOf<CNuLineSegment>(type) || IsTypeOf<CNuCircularArc>(type) ||
         IsTypeOf<CNuCompositeCurve>(type);
}

// The object as a T, or null. The code alone does not prove the class: a base class copied from a circle, or an ellipse
// to which a circle was assigned through a base class, carries the code of a circle without being one.
template<class T>
const T* As(const CNuObject& object) {
  if (!IsTypeOf<T>(object.GetType())) return nullptr;
  if (typeid(object) == typeid(T)) return static_cast<const T*>(&object);
  return dynamic_cast<const T*>(&object);
}

template<class T>
T* As(CNuObject& object) {
  return const_cast<T*>(As<T>(static_cast<const CNuObject&>(object)));
}

}  // namespace nu::internal

#endif

#ifndef NU_ENGINE_ROOMS_H
#define NU_ENGINE_ROOMS_H

// The rooms of the engine, from the foundation up. Each sees those above it in this list and none below: a use the
// other way round does not compile.
namespace nu::engine {

namespace base {}
namespace linear {
using namespace base;
}
namespace roots {
using namespace linear;
}
namespace quadrature {
using namespace roots;
}
namespace shapes {
using namespace quadrature;
}
namespace points {
using namespace shapes;
}
namespace hulls {
using namespace points;
}
namespace least_squares {
using namespace hulls;
}
namespace minimax {
using namespace least_squares;
}
namespace chains {
using namespace minimax;
}
namespace association {
using namespace chains;
}

}  // namespace nu::engine

// What the public classes share behind their interface; it sees the whole engine.
namespace nu::internal {
using namespace engine::association;
}

#endif

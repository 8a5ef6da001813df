#ifndef NU_ENGINE_MINIMAX_CONTACTS_H
#define NU_ENGINE_MINIMAX_CONTACTS_H

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::minimax {

// The points that hold the result of a minimax problem: the sign of their deviations, 1 outside and -1 inside, and
// their multipliers, which are not negative and add up to 1.
struct Contacts {
  static constexpr int kMostContacts = 8;  // one more than the unknowns of any problem

  int contacts = 0;
  Vec3 contact[kMostContacts];
  double sign[kMostContacts] = {};
  double multiplier[kMostContacts] = {};

  void AddContact(const Vec3& point, double side, double weight) {
    contact[contacts] = point;
    sign[contacts] = side;
    multiplier[contacts++] = weight;
  }

  // The same in another unit, with the signs as they are or turned.
  void TakeContacts(const Contacts& from, double unit, double turn = 1.0) {
    contacts = 0;
    for (int k = 0; k < from.contacts; ++k) AddContact(unit * from.contact[k], turn * from.sign[k], from.multiplier[k]);
  }
};

}  // namespace nu::engine::minimax

#endif

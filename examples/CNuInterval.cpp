// Ranges of a parameter.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuInterval turn;  // a full turn, in radians
  const CNuInterval part(1.0, 2.5, 0, 1);
  double lower = 0.0, upper = 0.0;
  turn.GetBounds(&lower, &upper);
  std::printf("turn from %.4f to %.4f\n", lower, upper);
  std::printf("3.0 in the turn: %d, in the part: %d\n", turn.IsIn(3.0), part.IsIn(3.0));
  std::printf("they overlap: %d, the part is open at its end: %d\n",
              turn.IsOverlapping(part), part.IsRightOpen());
}

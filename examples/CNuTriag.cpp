// The eccentricity of a rotary table, a cos u + b sin u + c, as amplitude and phase.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuTriag runout(0.003, 0.004, 0.010);
  std::printf("amplitude %.4f, largest at %.4f radians\n", runout.Amplitude(),
              runout.Phase());
  std::printf("there %.4f, opposite %.4f\n", runout.ValueAt(runout.Phase()),
              runout.ValueAt(runout.Phase() + Nu_PI));
}

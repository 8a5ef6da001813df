// A growable array of numbers: extremes, order, search with a tolerance.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuDoubleArray diameters(2);  // room for two; it grows
  for (const double d : {19.998, 20.003, 19.996, 20.001}) diameters.Add(d);
  std::printf("%d values from %.3f to %.3f, mean %.4f\n", diameters.GetSize(),
              diameters.Min(), diameters.Max(), diameters.Sum() / diameters.GetSize());

  CNuIntArray order(4);
  diameters.Sort(&order);
  std::printf("the smallest is number %d\n", order[0]);
  std::printf("20.0012 within 0.0005 is number %d\n", diameters.Find(20.0012, 0.0005));
}

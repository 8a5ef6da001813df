// A table of thermal expansion, read between its entries in three ways.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double degrees[] = {0.0, 10.0, 20.0, 30.0, 40.0},
               expansion[] = {-230.2, -115.4, 0.0, 116.1, 232.9};
  CNuDoubleArray x(5), y(5);
  for (int i = 0; i < 5; ++i) {
    x.Add(degrees[i]);
    y.Add(expansion[i]);
  }
  const CNuInterpolation table(x, y);
  double error = 0.0;
  std::printf("at 23.4: linear %.4f, spline %.4f, polynomial %.4f\n", table.Linear(23.4),
              table.Spline(23.4), table.Polynomial(23.4, &error));
  try {
    table.Spline(45.0);
  } catch (const CNuOperationException& failure) {
    std::printf("45 is outside: the table goes from %.0f to %.0f\n", failure.m_dLower,
                failure.m_dUpper);
  }
}

// A matrix in its file, and back to the last bit.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuMatrix rotation = CNuGeometry::RotationMatrix(30.0, CNuVector(1.0, 1.0, 1.0));
  rotation.BinaryDump("rotation.nu");
  CNuMatrix back;
  const bool sound = back.BinaryRead("rotation.nu");
  std::printf("read: %s, %d x %d\n", sound ? "yes" : "no", back.GetRowSize(),
              back.GetColumnSize());
  bool same = true;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) same = same && back.Element(i, j) == rotation.Element(i, j);
  std::printf("every element the same: %s\n", same ? "yes" : "no");
  std::remove("rotation.nu");
}

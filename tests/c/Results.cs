// Prints lines of results.c by calls from C#.

using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

[StructLayout(LayoutKind.Sequential)]
struct NuFeature {
  public int Kind, IsUnit;
  public double X, Y, Z, DirectionX, DirectionY, DirectionZ, XAxisX, XAxisY, XAxisZ, Size0, Size1;
}

static class Results {
  const int Points = 40, Stride = 4;
  const ulong Start = 0xcbf29ce484222325;
  static ulong hash = Start, state;

  [DllImport("nu")] static extern IntPtr nu_version_text();
  [DllImport("nu")] static extern IntPtr nu_error_message();
  [DllImport("nu")] static extern int nu_feature_fit(double[] xyz, int count, int stride, int criterion,
                                                     ref NuFeature feature, double[] form);
  [DllImport("nu")] static extern int nu_feature_distance(ref NuFeature first, ref NuFeature second, ref double distance);
  [DllImport("nu")] static extern int nu_feature_angle(ref NuFeature first, ref NuFeature second, ref double degrees);
  [DllImport("nu")] static extern int nu_feature_intersect(ref NuFeature first, ref NuFeature second,
                                                           [Out] NuFeature[] found, int capacity, out int count);
  [DllImport("nu")] static extern int nu_association_create(double[] xyz, int count, int stride, out IntPtr association);
  [DllImport("nu")] static extern int nu_association_add(IntPtr association, double[] xyz, int count, int stride);
  [DllImport("nu")] static extern int nu_association_fit(IntPtr association, int criterion, ref NuFeature feature,
                                                         IntPtr report);
  [DllImport("nu")] static extern void nu_association_free(IntPtr association);

  static void Add(ulong bits) { unchecked { hash = (hash ^ bits) * 0x100000001b3; } }
  static void Add(double value) { Add((ulong)BitConverter.DoubleToInt64Bits(value)); }
  static void Add(NuFeature f) {
    Add((ulong)f.Kind);
    foreach (double v in new[] {f.X, f.Y, f.Z, f.DirectionX, f.DirectionY, f.DirectionZ, f.Size0, f.Size1}) Add(v);
  }
  static void Line(string name, int first, int second, int third) {
    Console.WriteLine("{0} {1} {2} {3} {4:x16}", name, first, second, third, hash);
    hash = Start;
  }

  static double Uniform() {
    unchecked { state = state * 6364136223846793005 + 1442695040888963407; }
    return (state >> 11) / 9007199254740992.0;
  }

  static double[] Cloud(int kind) {
    var xyz = new double[Stride * Points];
    state = (ulong)kind;
    for (int i = 0; i < Points; ++i) {
      double t = 2.0 * Uniform() - 1.0, h = Uniform(), w = 2.0 * Uniform() - 1.0, e = 1e-3 * Uniform();
      double side = Uniform() < 0.5 ? -1.0 : 1.0;
      double c = side * (1.0 - t * t) / (1.0 + t * t), s = 2.0 * t / (1.0 + t * t);
      double p = (1.0 - w * w) / (1.0 + w * w), q = 2.0 * w / (1.0 + w * w), x = 0.0, y = 0.0, z = 0.0;
      switch (kind) {
        case 20: x = 10.0 * h; y = e; z = 1e-3 * t; break;
        case 21: x = 10.0 * t; y = 10.0 * h; z = e; break;
        case 22: x = (5.0 + e) * c; y = (5.0 + e) * s; break;
        case 33: x = (5.0 + e) * c; y = (5.0 + e) * s; z = 10.0 * h; break;
        default: x = (6.0 + e) * c * p; y = (6.0 + e) * s * p; z = (6.0 + e) * q; break;
      }
      xyz[Stride * i] = (2.0 * x - y + 2.0 * z) / 3.0 + 100.0;
      xyz[Stride * i + 1] = (2.0 * x + 2.0 * y - z) / 3.0 - 50.0;
      xyz[Stride * i + 2] = (2.0 * y + 2.0 * z - x) / 3.0 + 20.0;
    }
    return xyz;
  }

  static void Main() {
    var fitted = new Dictionary<int, NuFeature>();
    Line(Marshal.PtrToStringAnsi(nu_version_text()), 0, 0, 0);
    foreach (int kind in new[] {20, 21, 22, 33, 35}) {
      double[] xyz = Cloud(kind);
      for (int criterion = 3; criterion >= 0; --criterion) {
        var feature = new NuFeature {Kind = kind};
        IntPtr association;
        nu_association_create(null, 0, 3, out association);
        nu_association_add(association, xyz, Points, Stride);
        if (nu_association_fit(association, criterion, ref feature, IntPtr.Zero) == 0) {
          Add(feature);
          Line("fit", kind, criterion, 0);
        }
        nu_association_free(association);
        fitted[kind] = feature;
      }
    }
    foreach (var pair in new[] {new[] {20, 21}, new[] {22, 20}, new[] {33, 20}, new[] {35, 20}, new[] {33, 21},
                                new[] {35, 21}}) {
      NuFeature first = fitted[pair[0]], second = fitted[pair[1]];
      double distance = 0.0, degrees = 0.0;  // not set by a failure
      int count;
      var found = new NuFeature[8];
      nu_feature_distance(ref first, ref second, ref distance);
      nu_feature_angle(ref first, ref second, ref degrees);
      nu_feature_intersect(ref first, ref second, found, 8, out count);
      Add(distance);
      Add(degrees);
      for (int i = 0; i < count; ++i) Add(found[i]);
      Line("pair", pair[0], pair[1], count);
    }
    var none = new NuFeature {Kind = 22};
    int status = nu_feature_fit(new double[] {0.0, 0.0, 0.0, 1.0, 0.0, 0.0}, 2, 3, 0, ref none, null);
    foreach (char c in Marshal.PtrToStringAnsi(nu_error_message())) Add((ulong)c);
    Add(1e-7);
    Line("failure", status, 1, 0);
  }
}

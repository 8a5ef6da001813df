"""Prints lines of results.c by ctypes: results.py LIBRARY."""

import ctypes
import struct
import sys

nu = ctypes.CDLL(sys.argv[1])
nu.nu_version_text.restype = ctypes.c_char_p
nu.nu_error_message.restype = ctypes.c_char_p

POINTS, STRIDE, MASK = 40, 4, (1 << 64) - 1
START = 0xCBF29CE484222325
Points = ctypes.c_double * (STRIDE * POINTS)
Three = ctypes.c_double * 3


class Feature(ctypes.Structure):
    _fields_ = [("kind", ctypes.c_int32), ("is_unit", ctypes.c_int32), ("point", Three), ("direction", Three),
                ("x_axis", Three), ("size", ctypes.c_double * 2)]


class Line:
    hash = START

    @classmethod
    def add(cls, *values):
        for value in values:
            bits = value & MASK if isinstance(value, int) else struct.unpack("<Q", struct.pack("<d", value))[0]
            cls.hash = (cls.hash ^ bits) * 0x100000001B3 & MASK

    @classmethod
    def add_feature(cls, f):
        cls.add(f.kind, *f.point, *f.direction, *f.size)

    @classmethod
    def end(cls, *names):
        print(*names, f"{cls.hash:016x}")
        cls.hash = START


def cloud(kind):
    """The points of MakeCloud in results.c, for the kinds that are fitted here."""
    state = kind
    xyz = []

    def uniform():
        nonlocal state
        state = (state * 6364136223846793005 + 1442695040888963407) & MASK
        return (state >> 11) / 9007199254740992.0

    for _ in range(POINTS):
        t, h, w, e = 2.0 * uniform() - 1.0, uniform(), 2.0 * uniform() - 1.0, 1e-3 * uniform()
        side = -1.0 if uniform() < 0.5 else 1.0
        c, s = side * (1.0 - t * t) / (1.0 + t * t), 2.0 * t / (1.0 + t * t)
        p, q = (1.0 - w * w) / (1.0 + w * w), 2.0 * w / (1.0 + w * w)
        x, y, z = {20: (10.0 * h, e, 1e-3 * t), 21: (10.0 * t, 10.0 * h, e), 22: ((5.0 + e) * c, (5.0 + e) * s, 0.0),
                   33: ((5.0 + e) * c, (5.0 + e) * s, 10.0 * h),
                   35: ((6.0 + e) * c * p, (6.0 + e) * s * p, (6.0 + e) * q)}[kind]
        xyz += [(2.0 * x - y + 2.0 * z) / 3.0 + 100.0, (2.0 * x + 2.0 * y - z) / 3.0 - 50.0,
                (2.0 * y + 2.0 * z - x) / 3.0 + 20.0, 0.0]
    return Points(*xyz)


def main():
    fitted = {}
    Line.hash = START
    Line.end(nu.nu_version_text().decode("utf-8"), 0, 0, 0)
    for kind in (20, 21, 22, 33, 35):
        xyz = cloud(kind)
        for criterion in (3, 2, 1, 0):
            feature = Feature(kind)
            association = ctypes.c_void_p()
            nu.nu_association_create(xyz, POINTS, STRIDE, ctypes.byref(association))
            if nu.nu_association_fit(association, criterion, ctypes.byref(feature), None) == 0:
                Line.add_feature(feature)
                Line.end("fit", kind, criterion, 0)
            nu.nu_association_free(association)
            fitted[kind] = feature
    for first, second in ((20, 21), (22, 20), (33, 20), (35, 20), (33, 21), (35, 21)):
        distance, degrees, count = ctypes.c_double(), ctypes.c_double(), ctypes.c_int32()
        a, b = ctypes.byref(fitted[first]), ctypes.byref(fitted[second])
        found = (Feature * 8)()
        nu.nu_feature_distance(a, b, ctypes.byref(distance))
        nu.nu_feature_angle(a, b, ctypes.byref(degrees))
        nu.nu_feature_intersect(a, b, found, 8, ctypes.byref(count))
        Line.add(distance.value, degrees.value)
        for i in range(count.value):
            Line.add_feature(found[i])
        Line.end("pair", first, second, count.value)
    feature = Feature(22)
    status = nu.nu_feature_fit((ctypes.c_double * 6)(0.0, 0.0, 0.0, 1.0), 2, 3, 0, ctypes.byref(feature), None)
    Line.add(*nu.nu_error_message(), 1e-7)
    Line.end("failure", status, 1, 0)


main()

import nu

# A bore of 20 mm, probed at eight places: x, y and z of each.
points = [
    [10.004, 0.001, 0.0], [7.069, 7.074, 0.0], [0.002, 9.996, 0.0], [-7.075, 7.069, 0.0],
    [-9.997, -0.003, 0.0], [-7.066, -7.071, 0.0], [-0.001, -10.003, 0.0], [7.073, -7.068, 0.0],
]  # fmt: skip

try:
    for criterion in ("least_squares", "minimum_zone"):
        bore = nu.fit_circle(points, criterion)
        name = criterion.replace("_", " ") + ":"
        print(f"{name:14} diameter {2 * bore.radius:.4f} mm, roundness {bore.form:.4f} mm")
except nu.FitError as failure:
    print(failure)

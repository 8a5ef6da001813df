"""The example program of a class, with its output where it was recorded, for inclusion by the pages."""

# Pages by the stem of the header, with the class.
CLASSES = {
    "line": "CNuLine", "plane": "CNuPlane", "circle": "CNuCircle", "ellipse": "CNuEllipse", "hyperbola": "CNuHyperbola",
    "parabola": "CNuParabola", "sphere": "CNuSphSurf", "cylinder": "CNuCylSurf", "cone": "CNuConSurf", "torus": "CNuTorSurf",
    "sine_curve": "CNuSineCurve", "polynomial": "CNuPolynomial", "matrix": "CNuMatrix", "linear_equ_sys": "CNuLinearEquSys",
    "alg_equ": "CNuAlgEqu", "integral": "CNuIntegral", "interpolation": "CNuInterpolation", "composite_curve": "CNuCompositeCurve",
    "association": "CNuAssociation", "pcurve": "CNuPCurve",
}


def find(tree, stem, name):
    wanted = {stem, stem.replace("_", "-"), stem.replace("_", ""), name.lower(), name.lower().removeprefix("cnu")}
    for path in sorted((tree / "examples").rglob("*.cpp")):
        if path.stem.lower() in wanted:
            return path
    return None


def block(tree, path):
    shown = "/../" + path.relative_to(tree).as_posix()
    lines = [f"```{{literalinclude}} {shown}", ":language: cpp", "```", ""]
    for output in (path.with_suffix(".txt"), path.with_suffix(".out"), path.parent / "expected" / (path.stem + ".txt")):
        if output.exists():
            lines += ["It prints:", "", f"```{{literalinclude}} /../{output.relative_to(tree).as_posix()}", ":language: text", "```", ""]
            break
    return "\n".join(lines)


def generate(writer, tree):
    for stem, name in CLASSES.items():
        path = find(tree, stem, name)
        text = block(tree, path) if path else f"The reference of `{name}` lists its members.\n"
        writer.write(f"include/example-{stem}.md", text)

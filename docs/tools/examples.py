"""The example program of each class, with its recorded output, for inclusion by the pages."""

# The pages outside of the reference that show an example: the stem of the header, and the class.
CLASSES = {
    "line": "CNuLine", "plane": "CNuPlane", "circle": "CNuCircle", "ellipse": "CNuEllipse", "hyperbola": "CNuHyperbola",
    "parabola": "CNuParabola", "sphere": "CNuSphSurf", "cylinder": "CNuCylSurf", "cone": "CNuConSurf", "torus": "CNuTorSurf",
    "sine_curve": "CNuSineCurve", "polynomial": "CNuPolynomial", "matrix": "CNuMatrix", "linear_equ_sys": "CNuLinearEquSys",
    "alg_equ": "CNuAlgEqu", "integral": "CNuIntegral", "interpolation": "CNuInterpolation", "composite_curve": "CNuCompositeCurve",
    "pcurve": "CNuPCurve",
}
# Classes of which there are no objects but those of derived classes.
ROOTS = {"CNuObject", "CNuAlgebra", "CNuNumericalAnalysis", "CNuTrigonometry", "CNuGeometry", "CNuCurve", "CNuBoundedCurve", "CNuSurface"}
# Classes that the program of another one shows.
SHOWN_WITH = {
    "CNuBestfitException": "CNuException",
    "CNuOperationException": "CNuException",
    "CNuConstructionException": "CNuException",
    "CNuMemoryException": "CNuException",
    "CNuComplexPolarArray": "CNuComplexArray",
    "CNuCertificateVerdict": "CNuCertificate",
}


def programs(tree, classes):
    """{class: its program}; a public class without one ends the build."""
    found, missing = {}, []
    for name in classes:
        program = tree / "examples" / f"{SHOWN_WITH.get(name, name)}.cpp"
        is_there = program.exists() and program.with_suffix(".out").exists()
        if is_there and (name not in SHOWN_WITH or name in program.read_text(encoding="utf-8")):
            found[name] = program
        elif name not in ROOTS:
            missing.append(name)
    if missing:
        raise SystemExit(f"Classes without a program in examples/: {', '.join(missing)}")
    return found


def block(tree, program):
    """The program and what it prints; paths are relative to the pages, as those of Sphinx."""
    source, output = (f"/../{path.relative_to(tree).as_posix()}" for path in (program, program.with_suffix(".out")))
    return "\n".join([f"```{{literalinclude}} {source}", ":language: cpp", "```", "", "It prints:", "",
                      f"```{{literalinclude}} {output}", ":language: text", "```", ""])


def generate(writer, tree):
    found = programs(tree, CLASSES.values())
    for stem, name in CLASSES.items():
        writer.write(f"include/example-{stem}.md", block(tree, found[name]))

"""Pages of the C++ reference: one for each public header, in the order of the folders of the library."""

import xml.etree.ElementTree as ElementTree

import examples

ROOMS = {
    "foundation": "Foundation",
    "linalg": "Linear algebra",
    "numerics": "Numerical analysis",
    "geometry": "Geometry",
    "curves": "Curves",
    "surfaces": "Surfaces",
    "association": "Association",
    "c": "C interface",
    "": "Everything",
}
# Sections of a file beside its classes.
FREE = "enum typedef func var define"


def headers(xml):
    """(path below src, classes, structures of C, whether something is declared beside these) of every header."""
    index = ElementTree.parse(xml / "index.xml").getroot()
    for compound in index.findall("compound[@kind='file']"):
        name = compound.findtext("name")
        if not name.endswith(".h"):
            continue
        definition = ElementTree.parse(xml / (compound.get("refid") + ".xml")).getroot().find("compounddef")
        location = definition.find("location").get("file")
        classes = [inner.text for inner in definition.findall("innerclass") if "::" not in inner.text]
        if "/c/" in location:
            structs, classes = classes, []
        else:
            structs = []
        kinds = {member.get("kind") for member in definition.iter("memberdef")}
        yield location.split("src/", 1)[-1], classes, structs, bool(kinds & {"enum", "typedef", "function", "variable"})


def page(path, classes, structs, has_free, tree, programs):
    title = ", ".join(classes) if classes else path
    lines = [f"# {title}", "", f"```cpp\n#include <{path}>\n```", ""]
    for program in dict.fromkeys(programs[name] for name in classes if name in programs):
        lines += [examples.block(tree, program)]
    for name in classes:
        if len(classes) > 1:
            lines += [f"## {name}", ""]
        lines += ["```{doxygenclass} " + name, ":members:", ":protected-members:", "```", ""]
    if has_free:
        if classes:
            lines += ["## Beside the classes", ""]
        # In C the name of a structure is that of its typedef as well.
        sections = FREE.replace(" typedef", "") if structs else FREE
        lines += ["```{doxygenfile} " + path.rsplit("/", 1)[-1], f":sections: {sections}", "```", ""]
    for name in structs:
        lines += ["```{doxygenstruct} " + name, ":members:", "```", ""]
    return "\n".join(lines)


def generate(writer, xml, tree):
    rooms = {room: [] for room in ROOMS}
    found = list(headers(xml))
    programs = examples.programs(tree, [name for _, classes, _, _ in found for name in classes])
    for path, classes, structs, has_free in found:
        room = path.split("/")[1] if path.count("/") > 1 else ""
        if not classes and not has_free:
            continue
        name = "reference/" + path.removeprefix("nu/").removesuffix(".h").replace("/", "-")
        writer.write(name + ".md", page(path, classes, structs, has_free, tree, programs))
        rooms[room].append((classes[0] if classes else path, name, classes, path))
    text = ["# C++ reference", "", "Every public header, with all that it declares. `#include <nu/nu.h>` brings all of them.", ""]
    for room, title in ROOMS.items():
        if not rooms[room]:
            continue
        text += [f"## {title}", ""]
        for _, name, classes, path in sorted(rooms[room]):
            shown = ", ".join(f"`{c}`" for c in classes) if classes else f"`{path}`"
            text.append(f"- [{shown}]({name.removeprefix('reference/')}.md)")
        text += ["", "```{toctree}", ":hidden:", ""]
        text += [name.removeprefix("reference/") for _, name, _, _ in sorted(rooms[room])]
        text += ["```", ""]
    writer.write("reference/index.md", "\n".join(text))

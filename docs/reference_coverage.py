#!/usr/bin/env python3
"""Counts public classes and functions with text in the XML of Doxygen and names the others.

reference_coverage.py FOLDER PERCENT: fails when fewer than so many in 100 have text. Copies, moves and destructors,
whose meaning is the usual one, and enumerations without a name do not count.
"""
import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def has_text(element):
    parts = (element.find("briefdescription"), element.find("detaileddescription"))
    return any("".join(part.itertext()).strip() for part in parts if part is not None)


def is_special(owner, name, arguments):
    last = owner.split("::")[-1]
    inside = arguments[1 : arguments.rindex(")")]
    others = {f"const {last} &", f"{last} &&"}
    copies = name == last and any(inside.startswith(other) and "," not in inside for other in others)
    return copies or name == "operator=" or name.startswith("~")


def entries(folder):
    """Name and whether there is text, of each public class, function and enumeration once."""
    seen = set()
    for path in sorted(pathlib.Path(folder).glob("*.xml")):
        for compound in ElementTree.parse(path).getroot().findall("compounddef"):
            kind, owner = compound.get("kind"), compound.findtext("compoundname")
            if kind not in ("class", "struct", "namespace", "file"):
                continue
            if kind in ("class", "struct") and compound.get("prot") == "public":
                yield owner, has_text(compound)
            prefix = "" if kind == "file" else owner + "::"
            for member in compound.iter("memberdef"):
                if member.get("prot") != "public" or member.get("kind") not in ("function", "enum"):
                    continue
                if member.get("id") in seen:
                    continue
                seen.add(member.get("id"))
                name, arguments = member.findtext("name"), member.findtext("argsstring") or ""
                if name.startswith("@"):
                    continue
                if member.get("kind") == "function" and is_special(owner, name, arguments):
                    continue
                yield prefix + name + arguments, has_text(member)


def main():
    found = list(entries(sys.argv[1]))
    missing = sorted(name for name, documented in found if not documented)
    percent = 100.0 * (len(found) - len(missing)) / max(len(found), 1)
    print(f"{len(found) - len(missing)} of {len(found)} public classes and functions have text: {percent:.1f} %")
    for name in missing:
        print("  " + name)
    return 0 if found and percent >= float(sys.argv[2]) else 1


sys.exit(main())

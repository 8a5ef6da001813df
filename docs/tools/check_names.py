"""Checks what pages say about the library: calls exist, with as many arguments, and no program stands in a page uncompiled."""

import re
import xml.etree.ElementTree as ElementTree

# Other libraries have their names here.
FOREIGN = {"migration.md"}
# Tests extract these blocks, compile and run them: tests/c, python/tests, tests/package/consumer.
COMPILED_ELSEWHERE = {("c.md", "c"), ("c.md", "csharp"), ("python.md", "pycon"), ("c.md", "vbnet")}
PROGRAMS = {"cpp", "c", "csharp", "vbnet", "python", "pycon"}
CALL = re.compile(r"(?<!})`(?:(CNu\w+)::)?([A-Z]\w*|Nu\w+)(\(([^`]*)\))?`")


def declared(xml):
    """{name: {(class or "", least, most number of arguments)}} of all that is public, enumerators and classes included."""
    names = {}
    for file in xml.glob("*.xml"):
        if file.name == "index.xml":
            continue
        for compound in ElementTree.parse(file).getroot().iter("compounddef"):
            scope = compound.findtext("compoundname") if compound.get("kind") == "class" else ""
            names.setdefault(compound.findtext("compoundname"), set()).add(("", 0, 0))
            for member in compound.iter("memberdef"):
                parameters = [p for p in member.findall("param") if p.findtext("type") != "void"]
                least = sum(p.find("defval") is None for p in parameters)
                names.setdefault(member.findtext("name"), set()).add((scope, least, len(parameters)))
                for value in member.iter("enumvalue"):
                    names.setdefault(value.findtext("name"), set()).add(("", 0, 0))
    return names


def arguments(text):
    """The number of arguments of a call as a page writes it."""
    return len(text.split(",")) if text.strip() else 0


def faults_of(page, text, names):
    for language in re.findall(r"^```(\w+)$", text, re.MULTILINE):
        if language in PROGRAMS and (page, language) not in COMPILED_ELSEWHERE:
            yield f"{page}: a block of {language} that no test compiles; include a program of examples/ instead"
    prose = re.sub(r"^(```+|~~~+).*?^\1", "", text, flags=re.MULTILINE | re.DOTALL)
    page_class = re.search(r"`(CNu\w+)`\]\(\.\./generated", text)
    for scope, name, call, inside in CALL.findall(prose):
        if not (scope or call or name.startswith(("CNu", "Nu", "ENu"))) or name == "NAME":
            continue
        known = names.get(name, set())
        if not known:
            yield f"{page}: `{scope + '::' if scope else ''}{name}` does not exist"
            continue
        owner = scope or (page_class and page.startswith("fits/") and page_class[1])
        if not call or not inside or not owner or name.startswith(("Nu", "CNu")):
            continue
        fitting = [least <= arguments(inside) <= most for where, least, most in known if where == owner]
        if not any(fitting):
            yield f"{page}: {owner} has no `{name}` of {arguments(inside)} arguments"


def check(docs, xml):
    names = declared(xml)
    pages = [path for path in docs.rglob("*.md") if "generated" not in path.parts and path.name not in FOREIGN]
    faults = [fault for path in sorted(pages)
              for fault in faults_of(path.relative_to(docs).as_posix(), path.read_text(encoding="utf-8"), names)]
    if faults:
        raise SystemExit("\n".join(faults))

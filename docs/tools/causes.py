"""Tables of the causes of failure: numbers and meanings from the headers, what to do from docs/causes.json."""

import json
import re

CLASSES = {
    "Bestfit": ("bestfit", "CNuBestfitException"),
    "Operation": ("operation", "CNuOperationException"),
    "Construction": ("construction", "CNuConstructionException"),
    "Memory": ("memory", "CNuMemoryException"),
}


def generate(writer, foundation, remedies_file):
    header = (foundation / "causes.h").read_text(encoding="utf-8")
    texts = dict(re.findall(r'NU_CAUSE\([^,]+, (\w+),\s*"([^"]*)"\)', (foundation / "cause_text.cpp").read_text(encoding="utf-8")))
    remedies = json.loads(remedies_file.read_text(encoding="utf-8"))
    count = 0
    for enumeration, body in re.findall(r"enum ENu(\w+)Cause \{(.*?)\}", header, re.DOTALL):
        name, _ = CLASSES[enumeration]
        rows = ["| Cause | Name | What happened | What to do |", "|---|---|---|---|"]
        for enumerator, number in re.findall(r"(\w+) = (\d+)", body):
            count += 1
            rows.append(f"| {number} | `{enumerator}` | {texts[enumerator]} | {remedies.pop(enumerator)} |")
        writer.write(f"include/causes-{name}.md", "\n".join(rows) + "\n")
    if remedies:
        raise SystemExit(f"docs/causes.json has what no header has: {', '.join(remedies)}")
    writer.write("include/causes-count.md", f"{count}\n")

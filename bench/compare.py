#!/usr/bin/env python3
"""Print how the library compares with its peers.

usage: nu_bench --benchmark_out=run.json ...; compare.py run.json [more.json ...] [--worst RATIO] [--markdown FILE]

One line per question and size: the library's time, the best peer and its time, the ratio of the two (below 1 the
library is faster), the other peers, and from 100 000 to 1 000 000 the exponent of growth of the library's time.
Processor time, the median of the repetitions. Ends with 1 when a ratio is above --worst or a benchmark failed.
--markdown writes the table of the manual: compare.py run.json --markdown docs/ratios.md.
"""

import argparse
import json
import math
import statistics
import sys

LIBRARY = "nu"
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def read(paths):
    """{(question, size): {implementation: seconds}}, in the order of the runs, and the list of failures."""
    samples, failures = {}, []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run.get("run_type") == "aggregate":
                continue
            question, who, size = run["run_name"].split("/")[:3]
            if run.get("error_occurred"):
                failures.append(f"{question}/{who}/{size}: {run['error_message']}")
                continue
            row = samples.setdefault((question, int(size)), {})
            row.setdefault(who, []).append(run["cpu_time"] * SECONDS[run["time_unit"]])
    table = {key: {who: statistics.median(times) for who, times in row.items()} for key, row in samples.items()}
    return table, list(dict.fromkeys(failures))


def show(seconds):
    for unit in ("s", "ms", "us"):
        if seconds >= SECONDS[unit]:
            return f"{seconds / SECONDS[unit]:.3g} {unit}"
    return f"{seconds / SECONDS['ns']:.3g} ns"


def growth(table, question, size):
    """The exponent p of time ~ size^p between a tenth of the size and the size, for a million."""
    small = table.get((question, size // 10), {}).get(LIBRARY)
    if size != 1_000_000 or not small:
        return ""
    return f"{math.log10(table[question, size][LIBRARY] / small):.2f}"


def lines(table):
    for (question, size), row in table.items():
        if LIBRARY not in row:
            continue
        peers = sorted((time, who) for who, time in row.items() if who != LIBRARY)
        best = f"{peers[0][1]} {show(peers[0][0])}" if peers else "-"
        ratio = row[LIBRARY] / peers[0][0] if peers else None
        others = ", ".join(f"{who} {show(time)}" for time, who in peers[1:])
        yield ratio, [f"{question}/{size}", show(row[LIBRARY]), best, f"{ratio:.2f}" if ratio else "-",
                      growth(table, question, size), others]


def markdown(paths, table):
    """The table of the manual: one line per question, with the ratios from the smallest to the largest size."""
    with open(paths[0], encoding="utf-8") as file:
        context = json.load(file)["context"]
    rows = {}
    for (question, size), row in table.items():
        peers = sorted((time, who) for who, time in row.items() if who != LIBRARY)
        if LIBRARY in row and peers:
            rows.setdefault(question, []).append((size, row[LIBRARY] / peers[0][0], peers[0][1]))
    ratios = [ratio for cells in rows.values() for _, ratio, _ in cells]
    yield (f"Measured on {context['date'][:10]}, {context['num_cpus']} processors of {context['mhz_per_cpu']} MHz, one thread: "
           f"{len(ratios)} rows with a geometric mean of {statistics.geometric_mean(ratios):.2f}.")
    yield ""
    yield "| Question | Sizes | Ratio | Best peer |"
    yield "|---|---|---|---|"
    for question, cells in sorted(rows.items()):
        cells.sort()
        peers = ", ".join(f"`{who}`" for who in dict.fromkeys(who for _, _, who in cells))
        sizes = ", ".join(f"{size:,}" for size, _, _ in cells)
        yield f"| `{question}` | {sizes} | {', '.join(f'{ratio:.2g}' for _, ratio, _ in cells)} | {peers} |"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("runs", nargs="+", help="JSON files of nu_bench")
    parser.add_argument("--worst", type=float, default=math.inf, help="the ratio that is still accepted")
    parser.add_argument("--markdown", help="the file that receives the table of the manual")
    arguments = parser.parse_args()

    table, failures = read(arguments.runs)
    rated = list(lines(table))
    head = ["question/size", "nu", "best peer", "ratio", "growth", "other peers"]
    width = [max(len(cells[k]) for cells in [head] + [cells for _, cells in rated]) for k in range(len(head))]
    for cells in [head] + [cells for _, cells in rated]:
        print("  ".join(cell.ljust(width[k]) for k, cell in enumerate(cells)).rstrip())

    ratios = [ratio for ratio, _ in rated if ratio]
    if ratios:
        print(f"\n{len(ratios)} ratios, geometric mean {statistics.geometric_mean(ratios):.2f}, worst {max(ratios):.2f}")
    if arguments.markdown and ratios:
        with open(arguments.markdown, "w", encoding="utf-8") as file:
            file.writelines(f"{line}\n" for line in markdown(arguments.runs, table))
    for failure in failures:
        print(f"failed: {failure}", file=sys.stderr)
    return 1 if failures or (ratios and max(ratios) > arguments.worst) else 0


if __name__ == "__main__":
    sys.exit(main())

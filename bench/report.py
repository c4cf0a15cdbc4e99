#!/usr/bin/env python3
"""Makes of the benchmarks' results what people read.

usage: report.py RESULTS              prints the table of ratios
       report.py RESULTS PAGE CHART   also writes the page, from page.md beside this file, and the chart

RESULTS holds the lines that bench/support/report.h describes.
"""

import datetime
import os
import platform
import subprocess
import sys
from pathlib import Path

import chart

PEERS = {  # Debian's package: what it is called here
    "libboost-json1.81-dev": "Boost (JSON, Asio)",
    "rapidjson-dev": "RapidJSON",
    "nlohmann-json3-dev": "nlohmann-json",
    "libjsoncpp-dev": "jsoncpp",
    "libicu-dev": "ICU",
    "libstdc++-12-dev": "libstdc++ (`std::wstring_convert`, `std::wregex`)",
    "libssl-dev": "OpenSSL",
    "libhowardhinnant-date-dev": "date",
    "libabsl-dev": "Abseil",
    "libzmq3-dev": "ZeroMQ",
    "libspdlog-dev": "spdlog",
    "libcurl4-openssl-dev": "libcurl",
}


def read_results(path):
    """Ratios and figures, each a list in the order of the file."""
    ratios, figures = [], []
    for line in Path(path).read_text().splitlines():
        kind, program, *fields = line.split("\t")
        program = program.removesuffix("_bench")
        if kind == "ratio":
            what, peer, *numbers = fields
            ours, peers, lower, median, upper = map(float, numbers)
            ratios.append(dict(program=program, what=what.strip(), peer=peer, ours=ours, peers=peers, lower=lower,
                               median=median, upper=upper))
        elif kind == "figure":
            what, who, value, unit = fields
            figures.append(dict(program=program, what=what.strip(), who=who, value=float(value), unit=unit))
    return ratios, figures


def number(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def figure_text(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def label(what):
    """A name as Markdown: as it is, whatever characters are in it."""
    return f"`{what}`" if set(what) & set("*_\\") else what


def in_order(values):
    return list(dict.fromkeys(values))


def table(head, rows):
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, ["---"] * len(head), *rows])


def ratio_table(ratios, program):
    """One row per operation, one column per peer."""
    ratios = [ratio for ratio in ratios if ratio["program"] == program]
    if not ratios:
        return "Not measured in this run."
    peers = in_order(ratio["peer"] for ratio in ratios)
    rows = []
    for what in in_order(ratio["what"] for ratio in ratios):
        of_peer = {ratio["peer"]: ratio for ratio in ratios if ratio["what"] == what}
        cells = [f"{number(of_peer[peer]['median'])} ({number(of_peer[peer]['lower'])}-{number(of_peer[peer]['upper'])})"
                 if peer in of_peer else "" for peer in peers]
        rows.append([label(what), duration(next(iter(of_peer.values()))["ours"]), *cells])
    return table(["Operation", "Zelto", *peers], rows)


def figure_table(figures, program):
    """One row per measured thing, one column per library."""
    figures = [figure for figure in figures if figure["program"] == program]
    if not figures:
        return "Not measured in this run."
    all_who = in_order(figure["who"] for figure in figures)
    rows = []
    for what, unit in in_order((figure["what"], figure["unit"]) for figure in figures):
        of_who = {figure["who"]: figure["value"] for figure in figures
                  if (figure["what"], figure["unit"]) == (what, unit)}
        rows.append([what, unit, *(figure_text(of_who[who]) if who in of_who else "" for who in all_who)])
    return table(["What", "Unit", *all_who], rows)


def output_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def machine():
    model = next((line.split(":", 1)[1].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
                  if line.startswith("model name")), platform.processor())
    system = platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    kernel = platform.release().split("-")[0]
    compiler = output_of("c++", "-dumpfullversion") or "of unknown version"
    load = os.getloadavg()[2]
    return (f"Machine: {os.cpu_count()} cores of {model}; {system}, kernel {kernel}; "
            f"GCC {compiler}.\n{datetime.date.today().isoformat()}; in the 15 minutes before the end of the run "
            f"{load:.0f} threads wanted to run on average.")


def versions():
    found = []
    for package, name in PEERS.items():
        version = output_of("dpkg-query", "-W", "-f=${Version}", package)
        if version:
            found.append(f"{name} {version}")
    return ", ".join(found) + "."


def write_page(path, ratios, figures):
    replacements = {"@machine@": machine(), "@versions@": versions()}
    for program in in_order(ratio["program"] for ratio in ratios):
        replacements[f"@ratios:{program}@"] = ratio_table(ratios, program)
    for program in in_order(figure["program"] for figure in figures):
        replacements[f"@figures:{program}@"] = figure_table(figures, program)
    lines = []
    for line in (Path(__file__).parent / "page.md").read_text().splitlines():
        is_table = line.startswith(("@ratios:", "@figures:"))
        lines.append(replacements.get(line, "Not measured in this run." if is_table else line))
    Path(path).write_text("\n".join(lines) + "\n")


def print_table(ratios):
    print(f"{'':14} {'':44} {'ours':>10}   {'peer':22} {'peer takes':>10} {'ratio':>7}  quartiles")
    for ratio in ratios:
        print(f"{ratio['program']:14} {ratio['what']:44} {duration(ratio['ours']):>10}   {ratio['peer']:22} "
              f"{duration(ratio['peers']):>10} {number(ratio['median']):>7}  "
              f"{number(ratio['lower'])} to {number(ratio['upper'])}")


def main(arguments):
    ratios, figures = read_results(arguments[0])
    print_table(ratios)
    if len(arguments) == 3:
        write_page(arguments[1], ratios, figures)
        Path(arguments[2]).write_text(chart.draw(ratios))


if __name__ == "__main__":
    if len(sys.argv) not in (2, 4):
        sys.exit(__doc__)
    main(sys.argv[1:])

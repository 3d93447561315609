#!/usr/bin/env python3
"""Measures QELM's XPath engine beside libxml2 and pugixml.

For each size a manual is generated. Three programs open it, each with its own library, and evaluate the same
expressions in turn. Where the dialect means something else by an expression, the peers get one that means the same.
All programs that come to an end must select the same nodes. The table gives processor time, in milliseconds, of an
evaluation (`qelm`: of one that finds the document's index made; `first`: of the one that makes what it needs of it),
and our time as a share of the faster peer's. A peer that takes longer than the limit counts with the limit.
"""

import argparse
import json
import math
import os
import pathlib
import subprocess
import sys

BENCH = pathlib.Path(__file__).resolve().parent
PROGRAMS = ["qelm", "pugixml", "libxml2"]
PEERS = PROGRAMS[1:]


def has_word(word, attribute="audience"):
    """The peers' way to ask whether a list of words in an attribute has this one."""
    return f"contains(concat(' ',@{attribute},' '),' {word} ')"


# Our expression, and what means the same in XPath 1.0 where that is another.
EXPRESSIONS = [
    ("//para", None),
    ("//*", None),
    ("/manual/chapter/section/para", None),
    ("//section//para", None),
    ("//reply//remark", None),
    ("//reply//reply//remark", "//reply/descendant-or-self::reply//remark"),
    ("//remark/ancestor::reply", None),
    ("//section/title", None),
    ("//section/@id", None),
    ("//*[@id='s77']", None),
    ("//para[@audience='expert']", f"//para[{has_word('expert')}]"),
    ("//*[@audience='expert']/@product", f"//*[{has_word('expert')}]/@product"),
    ("//*[@level='advanced']/..", None),
    ("//*[@level!='basic']", "//*[not(@level='basic')]"),
    ("//item[@product='P100' or @level='advanced']", f"//item[{has_word('P100', 'product')} or @level='advanced']"),
    ("//para[em and @audience]", None),
    ("//section[.//note]", None),
    ("//section[not(.//table)]/title", None),
    ("//*[preceding-sibling::note]", None),
    ("//note/following-sibling::para[1]", None),
    ("//note/preceding-sibling::para", None),
    ("//para[following::note]", None),
    ("//table[preceding::list]", None),
    ("//note/following::para", None),
    ("//note/preceding::para", None),
    ("//*[ancestor::list[@level='advanced']]", None),
    ("//*[ancestor::reply]", None),
    ("//em/ancestor::section", None),
    ("//em/..", None),
    ("//para[last()]", "/descendant-or-self::para[last()]"),
    ("//section/para[1]", None),
    ("//section/*[last()]", None),
    ("//list/item[position()<3]", None),
    ("//*[self::note or self::table]/..", None),
    ("//para[contains(.,'Gehäuse')]", None),
    ("//title[starts-with(.,'valve')]", None),
    ("//section[title='pump valve']", None),
    ("//para[../title[contains(.,'sensor')]]", None),
    ("//row[cell[contains(.,'voltage')]]/cell[2]", None),
    ("//ref[//section/@id=@linkend]", None),
    ("//ref[@linkend=//section[@level='advanced']/@id]", None),
]


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench xpath", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--sizes", default="10000,100000,1000000", help="elements, smallest first (%(default)s)")
    parser.add_argument("--limit", type=int, default=20, help="seconds for one expression (%(default)s)")
    parser.add_argument("--only", help="only expressions that contain this text")
    parser.add_argument("--json", type=pathlib.Path, help="write the figures to this file too")
    parser.add_argument("--keep-files", action="store_true", help="leave the documents in the build folder")
    return parser.parse_args()


class Worker:
    """One of the programs, with the document open."""

    def __init__(self, build, name, document, limit):
        self.name = name
        command = [build / ("xpath_" + name), document, str(limit)]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.opened = self.answer()

    def answer(self):
        line = self.process.stdout.readline()
        if not line:
            sys.exit(f"bench: xpath_{self.name} ended with status {self.process.wait()}")
        return json.loads(line)

    def ask(self, expression):
        self.process.stdin.write(expression + "\n")
        self.process.stdin.flush()
        return self.answer()

    def close(self):
        self.process.stdin.close()
        self.process.wait()


def check(expression, answers):
    """All that answered must have selected the same."""
    for name, answer in answers.items():
        if answer.get("refused"):
            sys.exit(f"bench: {name} refuses {expression}")
    found = {name: (a["count"], a["nodes"]) for name, a in answers.items() if "timeout" not in a}
    if len(set(found.values())) > 1:
        counts = ", ".join(f"{name} {count} ({nodes})" for name, (count, nodes) in found.items())
        sys.exit(f"bench: the programs select different nodes by {expression}: {counts}")


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values))


def measure(workers, expression, for_peers, limit):
    answers = {name: worker.ask(expression if name == "qelm" else for_peers or expression)
               for name, worker in workers.items()}
    check(expression, answers)
    if "timeout" in answers["qelm"]:
        sys.exit(f"bench: qelm does not come to an end with {expression}")
    # A peer that came to no end takes the limit at least.
    seconds = {name: limit if "timeout" in answer else answer["seconds"] for name, answer in answers.items()}
    fastest = min(seconds[peer] for peer in PEERS)
    fastest_first = min(limit if "timeout" in answers[peer] else answers[peer]["first"] for peer in PEERS)
    return {"expression": expression, "for_peers": for_peers, "count": answers["qelm"]["count"],
            "seconds": {name: None if "timeout" in answers[name] else seconds[name] for name in PROGRAMS},
            "first": answers["qelm"]["first"], "kilobytes": answers["qelm"]["kilobytes"],
            "ratio": seconds["qelm"] / fastest, "first_ratio": answers["qelm"]["first"] / fastest_first}


def milliseconds(seconds, limit):
    if seconds is None:
        return f"> {limit * 1000:,}"
    return f"{seconds * 1000:,.3f}" if seconds < 0.1 else f"{seconds * 1000:,.0f}"


def print_row(row, limit):
    times = "".join(f"{milliseconds(row['seconds'][name], limit):>10}" for name in PROGRAMS)
    first = milliseconds(row["first"], limit)
    print(f"{row['expression']:49}{row['count']:>8}{times}{row['ratio']:>9.3f}{first:>9}{row['first_ratio']:>9.3f}")
    if row["for_peers"]:
        print(f"  peers: {row['for_peers']}")
    sys.stdout.flush()


def run_size(options, size, data):
    document = data / f"xpath-{size}.xml"
    build = options.build.resolve()
    parts = ["--with", "threads", "--without", "hidden"]
    subprocess.run([build / "generate", str(size), "--xml", document, *parts], check=True)
    workers = {name: Worker(build, name, document, options.limit) for name in PROGRAMS}
    print(f"\n{size:,} elements, {document.stat().st_size / 1e6:.1f} MB")
    for name, worker in workers.items():
        print(f"  {name:8} opened in {worker.opened['load'] * 1000:8,.1f} ms,"
              f" {worker.opened['kilobytes'] / 1024:7,.1f} MB")
    print(f"{'expression':49}{'nodes':>8}{'qelm':>10}{'pugixml':>10}{'libxml2':>10}{'ratio':>9}{'first':>9}{'ratio':>9}")
    rows = []
    for expression, for_peers in EXPRESSIONS:
        if options.only and options.only not in expression:
            continue
        rows.append(measure(workers, expression, for_peers, options.limit))
        print_row(rows[-1], options.limit)
    for worker in workers.values():
        worker.close()
    if not options.keep_files:
        os.remove(document)
    result = {"elements": size, "opened": {name: worker.opened for name, worker in workers.items()}, "rows": rows,
              "geometric_mean": geometric_mean([row["ratio"] for row in rows]),
              "geometric_mean_first": geometric_mean([row["first_ratio"] for row in rows])}
    print_summary(result)
    return result


def print_summary(result):
    rows = result["rows"]
    print(f"geometric mean of the ratios {result['geometric_mean']:.3f}, of first evaluations "
          f"{result['geometric_mean_first']:.3f}; most memory for index and result "
          f"{max(row['kilobytes'] for row in rows) / 1024:,.1f} MB")
    for row in rows:
        known = [row["seconds"][peer] for peer in PEERS if row["seconds"][peer] is not None]
        if known and min(known) > 0.001 and row["ratio"] > 1:
            print(f"  slower than the faster peer: {row['expression']}")
        if row["first"] > result["opened"]["libxml2"]["load"]:
            print(f"  slower than libxml2 opens the document: {row['expression']}")


def main():
    options = arguments()
    data = options.build.resolve() / "documents"
    data.mkdir(parents=True, exist_ok=True)
    results = [run_size(options, int(size), data) for size in options.sizes.split(",")]
    print("\nGeometric means of our time as a share of the faster peer's:")
    for result in results:
        print(f"  {result['elements']:>9,} elements: {result['geometric_mean']:.3f}"
              f" (first evaluations {result['geometric_mean_first']:.3f})")
    if options.json:
        options.json.write_text(json.dumps({"limit": options.limit, "sizes": results}, indent=1) + "\n")


if __name__ == "__main__":
    main()

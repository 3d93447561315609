#!/usr/bin/env python3
"""Measures how the cost of `qelm filter` grows with the shape of a document, where a step that is done once for each
of its neighbours would show: depth, width, attributes of one element, conditions, tables.

Each shape is made at two sizes, ten times apart, as XML, and converted to MIF; both are filtered, once by deleting from a
copy and once by hiding. The least processor time of a few runs is printed, and its growth from one size to the other:
about ten is what a cost in proportion gives, less where starting the program weighs.
"""

import argparse
import pathlib
import subprocess
import sys

import schemes
import timing

BENCH = pathlib.Path(__file__).resolve().parent
BEGINNER, EXPERT = ' audience="beginner"', ' audience="expert"'
ROWS = f"<row><entry><p{EXPERT}>a</p></entry><entry>b</entry></row><row{EXPERT}><entry>c</entry><entry>d</entry></row>"


def depth(count):
    return f"<s{BEGINNER}>" * count + "text" + "</s>" * count


def width(count):
    return "<m>" + "".join(f"<p{BEGINNER if i % 5 else EXPERT}>text</p>" for i in range(count)) + "</m>"


def attributes(count):
    return "<m><p " + " ".join(f'a{i}="v{i}"' for i in range(count)) + ">text</p></m>"


def conditions(count):
    return "<m>" + "".join(f"<?Fm Condstart C{i % 7}?><p{BEGINNER if i % 5 else EXPERT}>text</p><?Fm Condend C{i % 7}?>"
                           for i in range(count)) + "</m>"


def tables(count):
    return "<m>" + f"<table><tbody>{ROWS}</tbody></table>" * count + "</m>"


SHAPES = {"levels": (depth, 10000), "siblings": (width, 100000), "attributes": (attributes, 1000),
          "conditions": (conditions, 10000), "tables": (tables, 5000)}


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--runs", type=int, default=3, help="rounds of measurement (%(default)s)")
    return parser.parse_args()


def main():
    options = arguments()
    build = options.build.resolve()
    data = build / "documents"
    data.mkdir(parents=True, exist_ok=True)
    schemes.write_all_settings(data)
    profile = ["--main-settings", data / "keep.xml", "--profile", build / "profile", "--yes", "--quiet"]
    print(f"{'':12} {'count':>9} " + " ".join(f"{form + ' ' + mode:>16}" for form in ("XML", "MIF")
                                              for mode in ("delete", "hide")))
    for name, (shape, small) in SHAPES.items():
        before = None
        for count in (small, 10 * small):
            source = {form: data / f"growth-{count}.{form}" for form in ("xml", "mif")}
            source["xml"].write_text('<?xml version="1.0"?>\n' + shape(count))
            subprocess.run([build / "qelm", "convert", source["xml"], source["mif"], *profile], check=True,
                           capture_output=True)
            times = []
            for form, path in source.items():
                for mode in ("duplicate", "source"):
                    target = data / f"growth-out.{form}"
                    command = [build / "qelm", "filter", path, "--scheme", "Bench/Keep", "--mode", mode, *profile]
                    command += ["-o", target]
                    times.append(min(timing.run(build, command).cpu for _ in range(options.runs)))
                    target.unlink()
                path.unlink()
            texts = [f"{time:.3f}" + (f" ({time / old:.1f})" if before else "")
                     for time, old in zip(times, before or times)]
            print(f"{name:12} {count:9,} " + " ".join(f"{text:>16}" for text in texts))
            sys.stdout.flush()
            before = times


if __name__ == "__main__":
    main()

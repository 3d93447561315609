#!/usr/bin/env python3
"""Measures how fast QELM lays out and writes pages, beside groff.

A manual without tables is generated as MIF and as XML. QELM prints the MIF as PDF; groff prints the same
paragraphs and titles, from the text of the XML, as PDF, or as PostScript where it has no device for PDF. Both run in turn, several rounds; the table gives, from the
medians of processor time, pages a second as a ratio of the two and so for the whole text, since their pages hold
different amounts of it.
"""

import argparse
import pathlib
import re
import subprocess
import xml.etree.ElementTree

import timing

BENCH = pathlib.Path(__file__).resolve().parent


# Requests alone, as macro packages are not everywhere: pages with margins of an inch, titles in bold.
GROFF_PAGE = """.ps 10
.vs 12p
.ll 6i
.de TOP
'sp 1i
..
.de FOOT
'bp
..
.wh 0 TOP
.wh -1i FOOT
.de PARAGRAPH
.br
.ft R
.sp 6p
..
.de HEADING
.br
.sp 12p
.ft B
.."""


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--sizes", default="10000,50000", help="elements, smallest first (%(default)s)")
    parser.add_argument("--runs", type=int, default=3, help="rounds of measurement (%(default)s)")
    return parser.parse_args()


def write_groff(source, target):
    """The paragraphs of the XML for groff; what begins like a request is kept from being one."""
    lines = [GROFF_PAGE]
    inline = {"em", "ref", "term", "b", "i"}
    for element in xml.etree.ElementTree.parse(source).iter():
        if element.tag in inline or not ((element.text or "").strip() or any(c.tag in inline for c in element)):
            continue
        text = " ".join("".join(element.itertext()).split()).replace("\\", "\\e")
        lines.append(("\\&" if text[:1] in ".'" else "") + text)
        lines[-1:] = [".HEADING", lines[-1], ".PARAGRAPH"] if element.tag == "title" else [".PARAGRAPH", lines[-1]]
    target.write_text("\n".join(lines) + "\n", encoding="utf-8")


def groff_device():
    tried = subprocess.run(["groff", "-Tpdf"], input=b"", capture_output=True)
    return "pdf" if tried.returncode == 0 else "ps"


def pages(path):
    if path.suffix == ".ps":
        return len(re.findall(rb"^%%Page:", path.read_bytes(), re.MULTILINE))
    info = subprocess.run(["pdfinfo", path], capture_output=True, text=True, check=True).stdout
    return int(re.search(r"^Pages:\s+(\d+)", info, re.MULTILINE).group(1))


def main():
    options = arguments()
    folder = options.build / "pages"
    folder.mkdir(exist_ok=True)
    device = groff_device()
    print(f"groff writes {device}")
    print(f"{'elements':>9} {'pages':>7} {'groff pages':>12} {'pages a second / groff':>24} {'text a second / groff':>23}")
    for size in map(int, options.sizes.split(",")):
        mif, source, text = folder / "manual.mif", folder / "manual.xml", folder / "manual.roff"
        subprocess.run([options.build / "generate", str(size), "--mif", mif, "--xml", source, "--without", "tables"],
                       check=True)
        write_groff(source, text)
        ours, theirs = folder / "qelm.pdf", folder / f"groff.{device}"
        commands = {
            "qelm": [options.build / "qelm", "convert", mif, ours, "--quiet", "--profile", options.build / "profile"],
            "groff": ["sh", "-c", f"groff -k -T{device} '{text}' >'{theirs}' 2>/dev/null"],
        }
        tasks = {name: timing.Task([command]) for name, command in commands.items()}
        medians = timing.in_turn(options.build, tasks, options.runs)
        ratio = medians["groff"].cpu / medians["qelm"].cpu
        counts = pages(ours), pages(theirs)
        print(f"{size:>9} {counts[0]:>7} {counts[1]:>12} {ratio * counts[0] / counts[1]:>24.2f} {ratio:>23.2f}")


main()

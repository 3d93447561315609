#!/usr/bin/env python3
"""Measures `qelm batch`: many schemes over one document beside one scheme, and beside as many runs of xsltproc.

A manual is generated as MIF and as XML, the same tree. A settings document with N filter schemes is made, each with
values of its own that keep another part of the manual. Then run in turn, several rounds:

  one      qelm batch with the first scheme
  all      qelm batch with all N schemes
  jobs     the same, as many at once as the machine has processors
  runs     qelm filter, N times
  xslt     xsltproc, N times, with a profile that deletes the same elements from the XML file

Neither PDF nor XML is saved, no variables are imported. The medians of wall time and of processor time are printed, and
their ratios; on a machine with other work to do only those of processor time can be compared.
"""

import argparse
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

BENCH = pathlib.Path(__file__).resolve().parent

SCHEME = """<Scheme><SchemeSettings><Name>S{number:02}</Name><SpaceDelimitedVals>True</SpaceDelimitedVals></SchemeSettings>
<Attribute><Name>audience</Name><Value>{value}</Value></Attribute></Scheme>
"""
SETTINGS = """<QELM_MainSettings><SchemeCategories>{categories}</SchemeCategories>
<SchemeCategories_XPath/></QELM_MainSettings>
"""
CATEGORY = """<SchemeCategory><CategorySettings><Name>{name}</Name></CategorySettings><FilterSchemes>{schemes}</FilterSchemes>
<ColoringSchemes/><ValidationSchemes/></SchemeCategory>
"""
VALUES = ["beginner", "expert", "admin"]


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--elements", type=int, default=100000, help="size of the document (%(default)s)")
    parser.add_argument("--schemes", type=int, default=20, help="how many (%(default)s)")
    parser.add_argument("--runs", type=int, default=3, help="rounds of measurement (%(default)s)")
    parser.add_argument("--json", type=pathlib.Path, help="write the figures to this file too")
    return parser.parse_args()


def find(build, name):
    for path in (build / name, build / "bench" / name):
        if path.exists():
            return path
    sys.exit(f"bench: {name} is not built in {build}")


def seconds(measure, commands):
    """Wall time and processor time of the commands, one after the other."""
    wall_total = cpu_total = 0.0
    for command in commands:
        done = subprocess.run([measure, *command], capture_output=True, text=True, check=True)
        status, wall, cpu, _ = done.stdout.split()
        if status not in ("0", "1"):
            sys.exit(f"bench: exit status {status} of {' '.join(map(str, command))}\n{done.stderr}")
        wall_total += float(wall)
        cpu_total += float(cpu)
    return wall_total, cpu_total


def main():
    options = arguments()
    work = options.build / "batch"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    qelm, measure = find(options.build, "qelm"), find(options.build, "measure")
    mif, xml = work / "manual.mif", work / "manual.xml"
    subprocess.run([find(options.build, "generate"), str(options.elements), "--mif", mif, "--xml", xml], check=True)
    values = [VALUES[i % len(VALUES)] for i in range(options.schemes)]
    schemes = [SCHEME.format(number=i, value=value) for i, value in enumerate(values)]
    categories = CATEGORY.format(name="All", schemes="".join(schemes)) + CATEGORY.format(name="One", schemes=schemes[0])
    settings = work / "settings.xml"
    settings.write_text(SETTINGS.format(categories=categories))
    common = ["--main-settings", settings, "--profile", work / "profile", "--quiet"]

    def batch(category, *more):
        return [[qelm, "batch", mif, "--category", category, "--output", work / category / "<scheme_num>", "--no-pdf",
                 "--no-xml", "--set", "BF_POST_PROCESS_DEFAULT_ENABLE_VAR_IMPORT=0", *common, *more]]

    tasks = {
        "one": batch("One"),
        "all": batch("All"),
        "jobs": batch("All", "--jobs", str(os.cpu_count())),
        "runs": [[qelm, "filter", mif, "--scheme", f"All/S{i:02}", "--mode", "duplicate", "--yes", "-o",
                  work / "filtered.mif", *common] for i in range(options.schemes)],
    }
    if shutil.which("xsltproc"):
        tasks["xslt"] = [["xsltproc", "--stringparam", "keep", value, "-o", work / "profiled.xml", BENCH / "profile.xsl", xml]
                         for value in values]
    times = {name: [] for name in tasks}
    for _ in range(options.runs):
        for name, commands in tasks.items():
            times[name].append(seconds(measure, commands))
    medians = {name: statistics.median(wall for wall, _ in found) for name, found in times.items()}
    cpu = {name: statistics.median(cpu for _, cpu in found) for name, found in times.items()}
    print(f"{options.elements} elements, {mif.stat().st_size >> 20} MB as MIF, {options.schemes} schemes, "
          f"{options.runs} rounds")
    for name, median in medians.items():
        print(f"  {name:5} {median:8.3f} s   {median / medians['one']:6.2f} times one scheme   processor time "
              f"{cpu[name]:8.3f} s   {cpu[name] / cpu['one']:6.2f} times")
    if "xslt" in medians:
        print(f"  all / xslt {medians['all'] / medians['xslt']:.2f}")
    if options.json:
        options.json.write_text(json.dumps({"elements": options.elements, "schemes": options.schemes, "seconds": medians,
                                            "processor_seconds": cpu}))
    shutil.rmtree(work)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Measures QELM beside libxml2, pugixml, xsltproc and cp, and holds the figures against goals.

For each size a manual is generated, the same tree as MIF and as XML. bench/jobs.py says what is done with it and by which
programs: opening, filtering, saving as it is, coloring by 20 rules, validating by four rules, 20 schemes in a batch, a
book of 400 components, and a document of 20 elements, where all that counts is how soon a program has started.

Of each job every program runs once and the results are compared; when they are not the same, the run ends there. Then
the programs run in turn, several rounds, and the medians are printed, with the ratios that there are goals for. What
is compared is processor time, which other work on the machine disturbs less than time on the wall, and peak memory.

Before that, the start of the plug-in in a user's session is measured stage by stage, and compared with opening a
document of 10,000 elements, which has 50,000 words: about 100 pages. And the MIF document is colored by classic schemes
of 1 and of 20 rules within the program, with the host's operations that it calls for each element or text node.
"""

import argparse
import dataclasses
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

import jobs
import schemes
import timing

BENCH = pathlib.Path(__file__).resolve().parent
HUNDRED_PAGES = 10000  # elements


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--sizes", default="10000,100000,1000000", help="elements, smallest first (%(default)s)")
    parser.add_argument("--runs", type=int, default=5, help="rounds of measurement (%(default)s)")
    parser.add_argument("--only", help=f"these jobs alone: {','.join(jobs.JOBS)},session")
    parser.add_argument("--json", type=pathlib.Path, help="write the figures to this file too")
    parser.add_argument("--keep-files", action="store_true", help="leave the documents in the build folder")
    return parser.parse_args()


def wanted_jobs(size, sizes):
    """The jobs that are measured at this size."""
    where = {"all": sizes, "small": [20], "middle": [min(100000, sizes[-1])], "largest": sizes[-1:]}
    return [name for name, (_, at) in jobs.JOBS.items() if size in where[at]]


def run_job(bench, name, runs, libxml2):
    """Runs a job; what is written as JSON."""
    job = jobs.JOBS[name][0](bench)
    for task in job.tasks.values():
        timing.run_task(bench.build, task)
    job.check()
    figures = timing.in_turn(bench.build, job.tasks, max(1, round(runs * job.rounds)))
    goals = job.goals + (jobs.memory_goals(bench, figures, libxml2) if name != "start" else [])
    return {"job": name, "elements": bench.size, "load": os.getloadavg()[0],
            "bytes": {form: path.stat().st_size for form, path in bench.sources.items()},
            "tasks": {task: dataclasses.asdict(figure) for task, figure in figures.items()},
            "goals": [goal.judge(figures) for goal in goals]}


WORDS = {"cpu": "processor time", "seconds": "time on the wall", "megabytes": "memory"}


def print_goals(goals, indent="  ", judged=True):
    for goal in goals:
        verdict = f", goal {goal['most']:.3g}: {'met' if goal['met'] else 'MISSED'}" if judged else ""
        print(f"{indent}{WORDS[goal['what']]:16} {goal['ours']:18} {goal['ratio']:7.3f} of {goal['than']}{verdict}")


def print_result(result):
    megabytes = {form: size / 1e6 for form, size in result["bytes"].items()}
    print(f"\n{result['job']}: {result['elements']:,} elements, XML {megabytes['xml']:.1f} MB, "
          f"MIF {megabytes['mif']:.1f} MB; load of the machine {result['load']:.1f}")
    print(f"  {'':14} {'CPU ms':>10} {'wall ms':>10} {'peak MB':>8}")
    for name, figures in result["tasks"].items():
        print(f"  {name:14} {1000 * figures['cpu']:10.1f} {1000 * figures['seconds']:10.1f} "
              f"{figures['megabytes']:8.1f}")
    print_goals(result["goals"], judged=False)
    sys.stdout.flush()


def run_start_up(build, data, rounds=20):
    """Starts the plug-in with the shipped files and a profile of its own; the medians of the milliseconds."""
    document, profile = data / "pages.mif", data / "profile"
    shutil.rmtree(profile, ignore_errors=True)
    subprocess.run([build / "generate", str(HUNDRED_PAGES), "--mif", document], check=True)
    command = [build / "bench_start_up", BENCH.parent / "assets", profile, document, str(rounds)]
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    os.remove(document)
    shutil.rmtree(profile)
    return json.loads(done.stdout)


def print_start_up(figures):
    start = figures["start"]
    print(f"start of a session: {start:.1f} ms, {start / figures['open']:.2f} of opening 100 pages "
          f"({figures['open']:.1f} ms); the first one, which prepares the profile: {figures['first']:.1f} ms")
    for stage, milliseconds in figures["stages"].items():
        print(f"  {stage:26} {milliseconds:6.2f} ms {100 * milliseconds / start:5.1f} %")


def run_coloring(build, source, runs):
    """Colors a document by classic schemes of 1 and of 20 rules; the medians of the seconds."""
    figures = []
    for rules in (1, 20):
        lines = [subprocess.run([build / "bench_color", source, str(rules)], capture_output=True, text=True, check=True)
                 for _ in range(runs)]
        measured = [json.loads(line.stdout) for line in lines]
        figure = dict(measured[0])
        for part in ("open", "color", "save"):
            figure[part] = statistics.median(one[part] for one in measured)
        figures.append(figure)
    os.remove(str(source) + ".colored")
    return figures


def print_coloring(figures):
    print("coloring, MIF    seconds: open  color   save   color/(open+save)   host calls a node: all, "
          "reading attributes, writing properties")
    for figure in figures:
        ratio = figure["color"] / (figure["open"] + figure["save"])
        calls = [figure[what] / figure["visited"] for what in ("calls", "reads", "writes")]
        print(f"{figure['rules']:3} rules {figure['open']:19.3f} {figure['color']:6.3f} {figure['save']:6.3f} "
              f"{ratio:19.2f} {calls[0]:22.3f} {calls[1]:.3f} {calls[2]:.3f}"
              f"   ({figure['visited']:,} nodes, {figure['colored']:,} colored)")


def growth(results):
    """How processor time grows from one size to the next, as goals of a tenth more than in proportion."""
    before, goals = {}, []
    for result in results:
        for task, figures in result["tasks"].items():
            name, size = f"{result['job']} {task}", result["elements"]
            if task.startswith("qelm") and name in before:
                old_size, old = before[name]
                than = (f"that of {old_size:,}", old)
                goals.append(timing.Goal(name, 1.1 * size / old_size, than).judge({name: timing.Figures(**figures)}))
            before[name] = size, figures["cpu"]
    return goals


def prepare(data):
    shutil.rmtree(data, ignore_errors=True)
    data.mkdir(parents=True)
    schemes.write_all_settings(data)


def install(build, folder):
    """Copies the programs, as an installation does, and the peers that come in packages were. The system holds a file
    that was copied in larger pieces than one that a linker put together, which shows where a program starts."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    for program in build.iterdir():
        if program.is_file() and not program.is_symlink() and os.access(program, os.X_OK):
            shutil.copy(program, folder)
    return folder


def main():
    options = arguments()
    sizes = [int(size) for size in options.sizes.split(",")]
    only = options.only.split(",") if options.only else [*jobs.JOBS, "session"]
    data = options.build.resolve() / "documents"
    prepare(data)
    build = install(data.parent, data.parent / "programs")
    figures = {"runs": options.runs, "processors": os.cpu_count(), "results": []}
    if "session" in only:
        figures["start_up"] = run_start_up(build, data)
        print_start_up(figures["start_up"])
    for size in [20, *sizes]:
        names = [name for name in wanted_jobs(size, sizes) if name in only]
        coloring = "session" in only and size == sizes[-1]
        if not names and not coloring:
            continue
        bench, libxml2 = jobs.Bench(build, data, size), None
        for name in names:
            result = run_job(bench, name, options.runs, libxml2)
            print_result(result)
            figures["results"].append(result)
            if name == "filter":
                libxml2 = result["tasks"]["libxml2"]["megabytes"]
        if coloring:
            figures["coloring"] = run_coloring(build, bench.sources["mif"], options.runs)
            print_coloring(figures["coloring"])
        if not options.keep_files:
            prepare(data)
    figures["growth"] = growth(figures["results"])
    print("\nFrom one size to the next")
    print_goals(figures["growth"])
    last = {result["job"]: result for result in figures["results"]}
    print("\nAll goals, at the largest size of each job")
    for name, result in last.items():
        print(f"  {name}, {result['elements']:,} elements")
        print_goals(result["goals"], "    ")
    if options.json:
        options.json.write_text(json.dumps(figures, indent=1) + "\n")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Measures `qelm filter` beside libxml2, pugixml and xsltproc.

For each size a manual is generated, the same tree as MIF and as XML. Each program opens it, deletes every element
whose attribute `audience` is there and does not hold "beginner", and saves the result; QELM does it with both files,
the peers with the XML file. First each result is read back and compared: all XML results must have the same elements,
attributes, conditions and text, and the MIF result the same elements, attributes and amount of text. Then the
programs run in turn, several rounds, and the medians of wall time and of peak memory are printed, as ratios to each
peer, and how processor time, which other work on the machine disturbs less, grows with size.

Before that, the start of the plug-in in a user's session is measured stage by stage, and compared with opening a
document of 10,000 elements, which has 50,000 words: about 100 pages.

The same with a document of 20 elements, where all that counts is how soon a program has started. And each
document is opened and saved as it is (`qelm convert`), which must give the same bytes, beside `cp`; and opened alone,
beside the tree that each library builds.

Then the MIF document is colored by classic schemes of 1 and of 20 rules, and the time of that is printed as a ratio
to opening and saving the same document, with the host's operations that it calls for each element or text node.
"""

import argparse
import collections
import filecmp
import hashlib
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import xml.parsers.expat

BENCH = pathlib.Path(__file__).resolve().parent
KEEP = "beginner"
HUNDRED_PAGES = 10000  # elements


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=BENCH.parent / "build/bench", help="the build folder")
    parser.add_argument("--sizes", default="10000,100000,1000000", help="elements, smallest first (%(default)s)")
    parser.add_argument("--runs", type=int, default=5, help="rounds of measurement (%(default)s)")
    parser.add_argument("--json", type=pathlib.Path, help="write the figures to this file too")
    parser.add_argument("--keep-files", action="store_true", help="leave the documents in the build folder")
    return parser.parse_args()


class Programs:
    """The programs by name: what each reads, and its command."""

    def __init__(self, build):
        self.build = build
        self.qelm = [build / "qelm", "filter"]
        self.scheme = ["--scheme", "Bench/Keep", "--mode", "duplicate", "--yes", "--quiet"]
        self.scheme += ["--main-settings", BENCH / "bench_settings.xml", "--profile", build / "profile"]

    def command(self, name, source, target):
        if name.startswith("qelm"):
            return [*self.qelm, source, *self.scheme, "-o", target]
        if name == "xsltproc":
            return ["xsltproc", "--stringparam", "keep", KEEP, "-o", target, BENCH / "profile.xsl", source]
        return [self.build / ("peer_" + name), source, target, "audience", KEEP]

    @staticmethod
    def format(name):
        return "mif" if name == "qelm-mif" else "xml"


NAMES = ["qelm-xml", "qelm-mif", "pugixml", "libxml2", "xsltproc"]
PEERS = ["pugixml", "libxml2", "xsltproc"]


def measure(build, command):
    """Seconds on the wall, seconds of processor time and megabytes of one run of the command, which must succeed."""
    done = subprocess.run([build / "measure", *command], capture_output=True, text=True, check=True)
    status, seconds, cpu, kilobytes = done.stdout.split()
    if status != "0":
        sys.exit(f"bench: exit status {status} of {' '.join(map(str, command))}\n{done.stderr}")
    return float(seconds), float(cpu), int(kilobytes) / 1024


class Content:
    """What a document holds: how often each element with its attributes occurs, how much text, and (XML) a digest of
    everything in its order."""

    def __init__(self):
        self.elements = collections.Counter()
        self.characters = 0
        self.digest = None

    def count(self, tag, attributes):
        self.elements[(tag, tuple(sorted(attributes.items())))] += 1


def xml_content(path):
    content, order, text = Content(), hashlib.sha256(), []

    def flush():
        joined = "".join(text)
        text.clear()
        if joined.strip():
            content.characters += len(joined)
            order.update(b"T" + joined.encode())

    def begin(tag, attributes):
        flush()
        content.count(tag, attributes)
        order.update(("B" + tag + repr(sorted(attributes.items()))).encode())

    def end(tag):
        flush()
        order.update(b"E")

    def instruction(target, data):
        flush()
        order.update(("I" + target + data).encode())

    parser = xml.parsers.expat.ParserCreate()
    parser.buffer_text = True
    parser.StartElementHandler, parser.EndElementHandler = begin, end
    parser.CharacterDataHandler, parser.ProcessingInstructionHandler = text.append, instruction
    with open(path, "rb") as file:
        parser.ParseFile(file)
    content.digest = order.hexdigest()
    return content


MIF_LINE = re.compile(rb"\s*<(ETag|AttrName|AttrValue|String|AttributeDisplay) ?(?:`(.*)')?")
MIF_ESCAPE = re.compile(r"\\x([0-9a-f]{2}) ")
FRAME_ROMAN = dict(zip(("80", "85", "86", "8a", "9a", "9f", "a7"), "ÄÖÜäöüß"))


def decode(text):
    return MIF_ESCAPE.sub(lambda escape: FRAME_ROMAN[escape.group(1)], text.decode("ascii"))


def mif_content(path):
    """Reads the layout that the generator writes: a statement a line."""
    content = Content()
    tag, attributes, values = None, {}, None
    with open(path, "rb") as file:
        for line in file:
            match = MIF_LINE.match(line)
            if not match:
                continue
            statement, text = match.groups()
            if statement == b"String":
                content.characters += len(decode(text))
            elif statement == b"ETag":
                tag, attributes = decode(text), {}
            elif statement == b"AttrName":
                values = attributes[decode(text)] = []
            elif statement == b"AttrValue":
                values.append(decode(text))
            elif tag is not None:
                content.count(tag, {name: " ".join(words) for name, words in attributes.items()})
                tag = None
    return content


def check(name, content, first):
    if content.digest and content.digest != first.digest or content.elements != first.elements:
        differing = (content.elements - first.elements) + (first.elements - content.elements)
        examples = "".join(f"\n  {tag} {dict(attributes)}" for tag, attributes in list(differing)[:5])
        count = sum(differing.values())
        sys.exit(f"bench: the result of {name} is another than pugixml's: {count} elements differ{examples}")
    if content.characters != first.characters:
        sys.exit(f"bench: the result of {name} has {content.characters} characters, pugixml's {first.characters}")


def run_size(programs, size, runs, data):
    source = {form: data / f"{size}.{form}" for form in ("mif", "xml")}
    subprocess.run([programs.build / "generate", str(size), "--mif", source["mif"], "--xml", source["xml"]], check=True)
    target = {name: data / f"{size}-{name}.{programs.format(name)}" for name in NAMES}
    commands = {name: programs.command(name, source[programs.format(name)], target[name]) for name in NAMES}

    for name in NAMES:
        measure(programs.build, commands[name])
    first = xml_content(target["pugixml"])
    for name in NAMES:
        check(name, mif_content(target[name]) if name == "qelm-mif" else xml_content(target[name]), first)

    figures = {name: [] for name in NAMES}
    for _ in range(runs):
        for name in NAMES:
            figures[name].append(measure(programs.build, commands[name]))
    return {
        "elements": size,
        "kept": sum(first.elements.values()),
        "bytes": {form: path.stat().st_size for form, path in source.items()},
        "seconds": {name: statistics.median(run[0] for run in figures[name]) for name in NAMES},
        "cpu_seconds": {name: statistics.median(run[1] for run in figures[name]) for name in NAMES},
        "megabytes": {name: statistics.median(run[2] for run in figures[name]) for name in NAMES},
    }


def print_size(result):
    print(f"\n{result['elements']:,} elements, {result['kept']:,} kept; "
          f"XML {result['bytes']['xml'] / 1e6:.1f} MB, MIF {result['bytes']['mif'] / 1e6:.1f} MB")
    print(f"{'':10} {'seconds':>9} {'CPU s':>9} {'MB/s':>7} {'peak MB':>8}   ratios to each peer: seconds, MB")
    for name in NAMES:
        seconds, megabytes = result["seconds"][name], result["megabytes"][name]
        size = result["bytes"][Programs.format(name)]
        ratios = ""
        for peer in PEERS if name not in PEERS else []:
            slower, larger = seconds / result["seconds"][peer], megabytes / result["megabytes"][peer]
            ratios += f"   {peer} {slower:.2f} {larger:.2f}"
        cpu, rate = result["cpu_seconds"][name], size / 1e6 / seconds
        print(f"{name:10} {seconds:9.3f} {cpu:9.3f} {rate:7.0f} {megabytes:8.0f}{ratios}")


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


def run_small(programs, data, rounds=21):
    """Filters a document of 20 elements; the medians of the milliseconds of processor time, by program."""
    source = {form: data / f"small.{form}" for form in ("mif", "xml")}
    subprocess.run([programs.build / "generate", "20", "--mif", source["mif"], "--xml", source["xml"]], check=True)
    figures = {name: [] for name in ("qelm-xml", "qelm-mif", "xsltproc")}
    for _ in range(rounds):
        for name in figures:
            target = data / f"small-{name}.{programs.format(name)}"
            command = programs.command(name, source[programs.format(name)], target)
            figures[name].append(1000 * measure(programs.build, command)[1])
    return {name: statistics.median(times) for name, times in figures.items()}


def print_small(figures):
    print("20 elements, from start to end, ms of processor time: "
          + ", ".join(f"{name} {milliseconds:.1f}" for name, milliseconds in figures.items())
          + f"; qelm-xml {figures['qelm-xml'] / figures['xsltproc']:.2f} of xsltproc")


def run_opens(build, data, size, runs):
    """Opens the documents and builds what they hold, no more; the medians of the CPU seconds."""
    mif, xml_file = data / f"{size}.mif", data / f"{size}.xml"
    commands = {"qelm-xml": [build / "bench_open", xml_file], "qelm-mif": [build / "bench_open", mif],
                "pugixml": [build / "peer_pugixml", xml_file], "libxml2": [build / "peer_libxml2", xml_file]}
    times = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            times[name].append(measure(build, command)[1])
    return {name: statistics.median(seconds) for name, seconds in times.items()}


def print_opens(figures):
    texts = [f"{name} {seconds:.3f} ({seconds / figures['pugixml']:.2f} of pugixml)" for name, seconds in figures.items()]
    print("open, CPU s: " + "; ".join(texts))


def run_copies(build, data, size, runs):
    """Opens and saves the documents of that size as they are, beside `cp`; the medians of the CPU seconds."""
    figures = {}
    for form in ("mif", "xml"):
        source, target = data / f"{size}.{form}", data / f"{size}-copy.{form}"
        ours = [build / "qelm", "convert", source, target, "--quiet", "--yes"]
        commands = {"qelm": ours, "cp": ["cp", source, target]}
        times = {name: [] for name in commands}
        for _ in range(runs):
            for name, command in commands.items():
                target.unlink(missing_ok=True)
                times[name].append(measure(build, command)[1])
                if name == "qelm" and not filecmp.cmp(source, target, shallow=False):
                    sys.exit(f"bench: {source} is not the same after it was opened and saved")
        target.unlink()
        figures[form] = {name: statistics.median(seconds) for name, seconds in times.items()}
    return figures


def print_copies(figures):
    texts = [f"{form.upper()} {times['qelm']:.3f}, {times['qelm'] / times['cp']:.1f} times cp"
             for form, times in figures.items()]
    print("open and save as it is, CPU s: " + "; ".join(texts))


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


def print_scaling(results):
    for before, after in zip(results, results[1:]):
        growth = after["elements"] / before["elements"]
        factors = [f"{name} {after['cpu_seconds'][name] / before['cpu_seconds'][name]:.1f}" for name in NAMES]
        print(f"\nFrom {before['elements']:,} to {after['elements']:,} elements ({growth:g} times), CPU time grows by")
        print("  " + ", ".join(factors))


def main():
    options = arguments()
    sizes = [int(size) for size in options.sizes.split(",")]
    build = options.build.resolve()
    data = build / "documents"
    data.mkdir(parents=True, exist_ok=True)
    start_up = run_start_up(build, data)
    print_start_up(start_up)
    small = run_small(Programs(build), data)
    print_small(small)
    results = []
    for size in sizes:
        results.append(run_size(Programs(build), size, options.runs, data))
        print_size(results[-1])
        results[-1]["opens"] = run_opens(build, data, size, options.runs)
        print_opens(results[-1]["opens"])
        results[-1]["copies"] = run_copies(build, data, size, options.runs)
        print_copies(results[-1]["copies"])
        results[-1]["coloring"] = run_coloring(build, data / f"{size}.mif", options.runs)
        print_coloring(results[-1]["coloring"])
        sys.stdout.flush()
        if not options.keep_files:
            for path in data.glob(f"{size}[-.]*"):
                os.remove(path)
    print_scaling(results)
    if options.json:
        figures = {"runs": options.runs, "start_up": start_up, "small": small, "sizes": results}
        options.json.write_text(json.dumps(figures, indent=1) + "\n")


if __name__ == "__main__":
    main()

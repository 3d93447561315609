"""What the benchmark measures: each job has tasks that do the same by different programs, a check that they do, and
the goals that their figures are held against."""

import dataclasses
import filecmp
import os
import pathlib
import re
import subprocess
import sys

import contents
import schemes
from timing import Goal, Task

BENCH = pathlib.Path(__file__).resolve().parent
COMPONENTS = 400


@dataclasses.dataclass
class Job:
    tasks: dict
    check: object  # called when every task has run once; ends the run when they did not do the same
    goals: list
    rounds: float = 1  # of the rounds that are asked for


class Bench:
    """The documents of one size, and the commands over them."""

    def __init__(self, build, data, size):
        self.build, self.data, self.size = build, data, size
        self.sources = {form: data / f"{size}.{form}" for form in ("xml", "mif")}
        self.generate(size, self.sources["xml"], self.sources["mif"])

    def generate(self, size, xml, mif):
        subprocess.run([self.build / "generate", str(size), "--xml", xml, "--mif", mif], check=True)

    def target(self, name):
        return self.data / f"{self.size}-{name}.{self.form(name)}"

    @staticmethod
    def form(name):
        return "mif" if "mif" in name else "xml"

    def source(self, name):
        return self.sources[self.form(name)]

    def qelm(self, command, *arguments, settings="schemes.xml"):
        shared = ["--profile", self.build / "profile", "--yes", "--quiet"]
        if settings:
            shared += ["--main-settings", self.data / settings]
        return [self.build / "qelm", command, *arguments, *shared]

    def filter(self, source, target, scheme="Bench/Keep", settings="keep.xml"):
        return self.qelm("filter", source, "--scheme", scheme, "--mode", "duplicate", "-o", target, settings=settings)

    def printed(self, command):
        return subprocess.run(list(map(str, command)), capture_output=True, text=True).stdout


def open_job(bench):
    programs = {"qelm-xml": "bench_open", "qelm-mif": "bench_open", "pugixml": "peer_pugixml", "libxml2": "peer_libxml2"}
    tasks = {name: Task([[bench.build / program, bench.source(name)]]) for name, program in programs.items()}
    return Job(tasks, lambda: None, [Goal("qelm-xml", 1.5, "pugixml")])


def filter_tasks(bench):
    xml = bench.sources["xml"]
    xslt = ["xsltproc", "--stringparam", "keep", schemes.KEEP]
    commands = {
        "qelm-xml": lambda target: bench.filter(xml, target),
        "qelm-mif": lambda target: bench.filter(bench.sources["mif"], target),
        "pugixml": lambda target: [bench.build / "peer_pugixml", xml, target, f"audience={schemes.KEEP}"],
        "libxml2": lambda target: [bench.build / "peer_libxml2", xml, target, "audience", schemes.KEEP],
        "xsltproc": lambda target: [*xslt, "-o", target, BENCH / "profile.xsl", xml],
    }
    return {name: Task([command(bench.target(name))], [bench.target(name)]) for name, command in commands.items()}


def check_filtered(bench):
    first = contents.xml_content(bench.target("pugixml"))
    for name in ("qelm-xml", "qelm-mif", "libxml2", "xsltproc"):
        read = contents.mif_content if bench.form(name) == "mif" else contents.xml_content
        contents.check(name, read(bench.target(name)), first)


def filter_job(bench):
    goals = [Goal("qelm-xml", 0.5, "pugixml"), Goal("qelm-xml", 0.1, "xsltproc"), Goal("qelm-mif", 2, "pugixml")]
    return Job(filter_tasks(bench), lambda: check_filtered(bench), goals)


def small_job(bench):
    """From start to end: where all that counts is how soon a program has started. One task reads the settings document
    that is shipped."""
    tasks = filter_tasks(bench)
    target = bench.target("shipped")
    tasks["qelm-shipped"] = Task(
        [bench.filter(bench.sources["xml"], target, scheme="Audience/Beginner", settings=None)], [target])
    return Job(tasks, lambda: check_filtered(bench),
               [Goal("qelm-xml", 1, "xsltproc"), Goal("qelm-shipped", 0.015, ("a second", 1.0))], rounds=7)


def copy_job(bench):
    tasks = {}
    for form, source in bench.sources.items():
        ours, theirs = bench.target(f"qelm-{form}"), bench.target(f"cp-{form}")
        tasks[f"qelm-{form}"] = Task([bench.qelm("convert", source, ours)], [ours])
        tasks[f"cp-{form}"] = Task([["cp", source, theirs]], [theirs])

    def check():
        for form, source in bench.sources.items():
            if not filecmp.cmp(source, bench.target(f"qelm-{form}"), shallow=False):
                sys.exit(f"bench: {source} is not the same after it was opened and saved")

    return Job(tasks, check, [Goal("qelm-xml", 6, "cp-xml"), Goal("qelm-mif", 6, "cp-mif")])


def color_job(bench):
    def color(name, *more):
        return bench.qelm("color", bench.source(name), "--scheme", "Bench/Color", "-o", bench.target(name), *more)

    stylesheet = bench.data / "marking.xsl"
    schemes.write_marking(stylesheet)
    tasks = {name: Task([color(name)], [bench.target(name)]) for name in ("qelm-xml", "qelm-mif")}
    target = bench.target("xsltproc")
    tasks["xsltproc"] = Task([["xsltproc", "-o", target, stylesheet, bench.sources["xml"]]], [target])

    def check():
        if contents.marked_text(bench.target("qelm-xml")) != contents.marked_text(target):
            sys.exit("bench: qelm-xml has marked other text than xsltproc")
        for name, inheriting in (("qelm-xml", ""), ("qelm-mif", "ref")):
            schemes.write_marking(stylesheet, inheriting)
            marked = bench.printed(["xsltproc", stylesheet, bench.sources["xml"]])
            expected = [marked.count(f'mark="{line} {color}"') for line, color in schemes.MARKS]
            found = [int(count) for count in re.findall(r"rule \d+ .*: (\d+)", bench.printed(color(name)))]
            if found != expected:
                sys.exit(f"bench: {name} has marked {found} elements by rule, xsltproc {expected}")
        schemes.write_marking(stylesheet)

    return Job(tasks, check, [Goal(name, 0.1, "xsltproc") for name in ("qelm-xml", "qelm-mif")])


VIOLATION = re.compile(r"/(\w+)\[\d+\]: (\w+)=\"(.*?)\": .* \(rule (\d)\)$", re.MULTILINE)


def validate_job(bench):
    commands = {name: bench.qelm("validate", bench.source(name), "--scheme", "Bench/Valid", "--rules", "1,2,3,4")
                for name in ("qelm-xml", "qelm-mif")}
    stylesheet = bench.data / "checking.xsl"
    schemes.write_checking(stylesheet)
    commands["xsltproc"] = ["xsltproc", stylesheet, bench.sources["xml"]]

    def check():
        expected = bench.printed(commands["xsltproc"]).splitlines()
        for name in ("qelm-xml", "qelm-mif"):
            found = [f"{rule} {tag} {attribute} {value}"
                     for tag, attribute, value, rule in VIOLATION.findall(bench.printed(commands[name]))]
            if found != expected or not found:
                sys.exit(f"bench: {name} has found {len(found)} violations, xsltproc {len(expected)}, or others")

    return Job({name: Task([command]) for name, command in commands.items()}, check,
               [Goal(name, 0.1, "xsltproc") for name in ("qelm-xml", "qelm-mif")])


def batch_job(bench):
    """Documents only, no pages; the peer parses once and copies the tree for each scheme."""
    outputs = [bench.data / f"batch-pugixml/{number}.xml" for number in range(1, len(schemes.FILTERS) + 1)]
    outputs[0].parent.mkdir(exist_ok=True)
    work = [argument for output, conditions in zip(outputs, schemes.FILTERS)
            for argument in (output, schemes.filter_arguments(conditions))]
    tasks = {"pugixml": Task([[bench.build / "peer_pugixml", bench.sources["xml"], *work]], outputs)}
    goals = [Goal("qelm-xml", 0.4, "pugixml")]
    for form, source in bench.sources.items():
        for name, category, jobs in (("one", "One", 1), ("", "All", 1), ("two", "All", 2)):
            task = "-".join(filter(None, ("qelm", form, name)))
            folder = bench.data / f"batch-{task}"
            tasks[task] = Task([bench.qelm(
                "batch", source, "--category", category, "--output", folder / "<scheme_num>", "--no-pdf", "--no-xml",
                "--jobs", jobs, "--set", "BF_POST_PROCESS_DEFAULT_ENABLE_VAR_IMPORT=0")], [folder])
        goals += [Goal(f"qelm-{form}", 6, f"qelm-{form}-one"),
                  Goal(f"qelm-{form}-two", 4, f"qelm-{form}-one", "seconds")]

    def check():
        for number, expected in enumerate(outputs, 1):
            elements = len(re.findall(rb"<\w", expected.read_bytes()))
            for jobs in ("", "-two"):
                contents.same_xml(bench.data / f"batch-qelm-xml{jobs}/{number}/{bench.size}.xml", expected)
                mif = bench.data / f"batch-qelm-mif{jobs}/{number}/{bench.size}.mif"
                if mif.read_bytes().count(b"<ETag ") != elements:
                    sys.exit(f"bench: {mif} has not the {elements} elements of {expected}")
        contents.check("qelm-mif", contents.mif_content(bench.data / f"batch-qelm-mif/1/{bench.size}.mif"),
                       contents.xml_content(outputs[0]))

    return Job(tasks, check, goals)


def book_job(bench):
    """A book in mode duplicate beside its components one by one, and a tenth of it."""
    folder = bench.data / "book"
    folder.mkdir(exist_ok=True)
    names = [f"c{number:03}.mif" for number in range(COMPONENTS)]
    bench.generate(bench.size // COMPONENTS, folder / "c.xml", folder / names[0])
    content = (folder / names[0]).read_bytes()
    for name in names[1:]:
        (folder / name).write_bytes(content)
    tasks = {}
    for task, components in (("book", names), ("tenth", names[::10])):
        (folder / f"{task}.mif").write_text("<Book 8.0>\n" + "".join(
            f"<BookComponent \n <FileName `<c\\>{name}'>\n> # end of BookComponent\n" for name in components))
        out = bench.data / f"book-{task}"
        tasks[task] = Task([bench.qelm("filter", folder / f"{task}.mif", "--scheme", "Bench/Keep", "--mode", "duplicate",
                                       "--output-folder", out)], [out])
    single = bench.data / "book-single"
    single.mkdir(exist_ok=True)
    tasks["one by one"] = Task([bench.filter(folder / name, single / name, settings="schemes.xml") for name in names],
                               [single / name for name in names])

    # The text of references is another: with the book they are updated.
    def check():
        for name in names:
            alone, in_book = (contents.mif_content(path / name) for path in (single, bench.data / "book-book"))
            if alone.elements != in_book.elements:
                sys.exit(f"bench: {name} of the filtered book has other elements than {name} filtered alone")

    return Job(tasks, check, [Goal("book", 1.1, "one by one"), Goal("book", 1.2, "tenth", "megabytes")], rounds=0.5)


# Each with the sizes that it is measured at: all, 20 elements, at most 100,000, or the largest.
JOBS = {"start": (small_job, "small"), "open": (open_job, "all"), "filter": (filter_job, "all"),
        "copy": (copy_job, "all"), "color": (color_job, "all"), "validate": (validate_job, "all"),
        "batch": (batch_job, "middle"), "book": (book_job, "largest")}


def memory_goals(bench, tasks, libxml2):
    """At most so many times the file, and at most what the libxml2 program held."""
    goals = []
    for form, most in (("xml", 4), ("mif", 1.5)):
        name, megabytes = f"qelm-{form}", os.path.getsize(bench.sources[form]) / 2**20
        if name in tasks:
            goals.append(Goal(name, most, ("the file", megabytes), "megabytes"))
            if libxml2:
                goals.append(Goal(name, 1, ("the libxml2 program", libxml2), "megabytes"))
    return goals

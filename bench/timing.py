"""Times programs in turn and holds the figures against goals. All benchmarks time by this."""

import dataclasses
import shutil
import statistics
import subprocess
import sys


@dataclasses.dataclass
class Task:
    """What is timed as one: commands that run one after the other, and what is removed before they do."""

    commands: list
    outputs: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Figures:
    """Of a task: seconds on the wall and of processor time, and the most megabytes that a process of it held."""

    seconds: float
    cpu: float
    megabytes: float


@dataclasses.dataclass
class Goal:
    """`ours` is at most `most` times `than`: another task, or (words for it, a figure)."""

    ours: str
    most: float
    than: object
    what: str = "cpu"

    def judge(self, figures):
        words, base = (self.than, getattr(figures[self.than], self.what)) if self.than in figures else self.than
        ratio = getattr(figures[self.ours], self.what) / base
        return {"ours": self.ours, "what": self.what, "than": words, "ratio": ratio, "most": self.most,
                "met": ratio <= self.most}


def run(build, command, accepted=("0",)):
    """Figures of one run of the command, which must end with an accepted exit status."""
    done = subprocess.run([build / "measure", *map(str, command)], capture_output=True, text=True, check=True)
    status, seconds, cpu, kilobytes = done.stdout.split()
    if status not in accepted:
        sys.exit(f"bench: exit status {status} of {' '.join(map(str, command))}\n{done.stderr}")
    return Figures(float(seconds), float(cpu), int(kilobytes) / 1024)


def run_task(build, task):
    for path in task.outputs:
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink(missing_ok=True)
    # 1 is the status of a validation that has found something.
    runs = [run(build, command, ("0", "1")) for command in task.commands]
    return Figures(sum(one.seconds for one in runs), sum(one.cpu for one in runs), max(one.megabytes for one in runs))


def in_turn(build, tasks, rounds):
    """The medians of the tasks, by name, of so many rounds in which each of them runs."""
    found = {name: [] for name in tasks}
    for _ in range(rounds):
        for name, task in tasks.items():
            found[name].append(run_task(build, task))
    return {name: Figures(*(statistics.median(values) for values in zip(*map(dataclasses.astuple, runs))))
            for name, runs in found.items()}

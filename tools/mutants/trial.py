"""Runs tests: which of them reach a change, and whether they notice it."""

import os
import resource
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass, field
from pathlib import Path

SLOW = 10.0  # seconds; a test that takes longer is left out
MEMORY = 4 << 30  # bytes of addresses: a change may make a loop that allocates for ever


@dataclass
class Test:
    """A test that runs by itself. name: of a GoogleTest program's test, or None for a script of commands."""
    command: list
    name: str = None
    seconds: float = 0
    reached: set = field(default_factory=set)


class Runner:
    def __init__(self, folder, path):
        self.folder = folder  # for what the tests leave behind
        self.path = path  # of programs, in front of the environment's

    def run(self, command, timeout, **variables):
        """Whether it succeeds in time, and how long it took. All that it started is gone afterwards."""
        self.folder.mkdir(parents=True, exist_ok=True)
        environment = {**os.environ, "PATH": f"{self.path}:{os.environ['PATH']}", "TMPDIR": str(self.folder),
                       **{name: str(value) for name, value in variables.items()}}
        began = time.monotonic()
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True, cwd=self.folder,
                                   preexec_fn=limit)
        try:
            good = process.wait(timeout) == 0
        except subprocess.TimeoutExpired:
            good = False
        finally:
            end_group(process)
        return good, time.monotonic() - began

    def clean(self):
        shutil.rmtree(self.folder, ignore_errors=True)


def limit():
    os.nice(5)
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def tests_of(program):
    """The tests of a GoogleTest program, by their full names."""
    listed = subprocess.run([program, "--gtest_list_tests"], stdout=subprocess.PIPE, check=True, text=True).stdout
    suite, found = "", []
    for line in listed.splitlines():
        name = line.split("#")[0].rstrip()
        if not line.startswith(" "):
            suite = name if name.endswith(".") else ""
        elif suite:
            found.append(Test([str(program)], suite + name.strip()))
    return found


def alone(test):
    return test.command + ([f"--gtest_filter={test.name}"] if test.name else [])


def reach(runner, test, number):
    """Notes which changes the test reaches, and how long it takes. False where it fails as it is.

    It may fail while it is watched: one that allows itself no more files is then known for what it reached before."""
    record = runner.folder / f"reached-{number}"
    record.unlink(missing_ok=True)
    runner.run(alone(test), 300, TAVRENIX_MUTANTS_REACHED=record)
    if record.exists():
        test.reached = {int(line) for line in record.read_text().split()}
        record.unlink()
    good, test.seconds = runner.run(alone(test), 300)
    return good


def batches(tests):
    """One command for all tests of a program, in the order of the tests; and how long they take together."""
    groups = {}
    for test in tests:
        groups.setdefault(tuple(test.command) if test.name else id(test), []).append(test)
    found = []
    for group in groups.values():
        command = group[0].command
        if group[0].name:
            names = ":".join(test.name for test in group)
            command = command + [f"--gtest_filter={names}", "--gtest_fail_fast"]
        found.append((sum(test.seconds for test in group), command))
    return found


def is_killed(runner, number, tests):
    """Whether one of the tests notices the change, twice. A test that hangs has noticed it as well."""
    def fails(command, seconds):
        return not runner.run(command, 10 + 5 * seconds, TAVRENIX_MUTANT=number)[0]

    return any(fails(command, seconds) and fails(command, seconds) for seconds, command in batches(tests))

"""Runs tests: which of them reach a change, and whether they notice it."""

import os
import resource
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass, field
from pathlib import Path

SLOW = 10.0  # seconds; tests that take longer are left out
MEMORY = 4 << 30  # bytes of address space: a change may cause an endless loop that allocates


@dataclass
class Test:
    """A test that can run alone. name: that of a test in a GoogleTest program, or None for a script of commands."""
    command: list
    name: str = None
    seconds: float = 0
    reached: set = field(default_factory=set)


class Runner:
    def __init__(self, folder, path):
        self.folder = folder  # the working folder of the tests
        self.path = path  # the folder to put in front of PATH

    def run(self, command, timeout, **variables):
        """Runs the command. Returns whether it succeeded in time, and its seconds. Ends all that it started."""
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
    resource.setrlimit(resource.RLIMIT_CPU, (int(2 * SLOW), int(2 * SLOW)))  # ends an endless loop
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def tests_of(program):
    """Returns the tests of a GoogleTest program, with their full names."""
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
    """Notes which changes the test reaches, and its seconds. Returns false if it fails although no change is on.

    The run that records changes may fail, for instance if the test forbids itself to open files. Then only the changes
    that it reached before are known."""
    record = runner.folder / f"reached-{number}"
    record.unlink(missing_ok=True)
    runner.run(alone(test), 300, TAVRENIX_MUTANTS_REACHED=record)
    if record.exists():
        test.reached = {int(line) for line in record.read_text().split()}
        record.unlink()
    good, test.seconds = runner.run(alone(test), 300)
    return good


def batches(tests):
    """Returns one command for all these tests of each program, with their seconds. The quickest comes first."""
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
    return sorted(found, key=lambda batch: batch[0])  # many changes are noticed by the quickest


def is_killed(runner, number, tests):
    """Returns true if a command fails twice with the change on. A test that hangs counts as failed."""
    def fails(command, seconds):
        return not runner.run(command, 10 + 5 * seconds, TAVRENIX_MUTANT=number)[0]

    return any(fails(command, seconds) and fails(command, seconds) for seconds, command in batches(tests))

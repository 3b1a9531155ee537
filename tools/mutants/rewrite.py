"""Writes changes into sources, each behind its switch, and takes out those that the compiler refuses."""

import concurrent.futures
import json
import os
import shlex
from pathlib import Path

from clang.cindex import Index, TranslationUnit

import sites

MOST_OF_A_FILE = 1000  # the numbers of a file, so that a change of one file does not renumber the others


def rewritten(text, mutants):
    """Returns the text with all changes in it, and the range of each change in that text."""
    edits = []
    # If one change lies within another, the outer one opens first and closes last.
    for rank, one in enumerate(sorted(mutants, key=lambda m: (m.start, -m.end))):
        call = f"::mutant::{'onAtRunTime' if one.constexpr else 'on'}({one.number})"
        edits.append(((one.start, 1, rank), one.before.replace("%s", call), one, 0))
        edits.append(((one.end, 0, -rank), one.after.replace("%s", call), one, 1))
    out, at, ranges = b"", 0, {}
    for (offset, _, _), insert, one, side in sorted(edits, key=lambda edit: edit[0]):
        out += text[at:offset]
        at = offset
        ends = ranges.setdefault(one.number, [0, 0])
        ends[side] = len(out) + (len(insert.encode()) if side else 0)
        out += insert.encode()
    return out + text[at:], ranges


def number(mutants_of_files):
    for rank, mutants in enumerate(mutants_of_files):
        seen = {}
        for place, one in enumerate(mutants):
            one.number = rank * MOST_OF_A_FILE + place + 1
            one.ordinal = 1
            seen[one.key] = one.ordinal = seen.get(one.key, 0) + 1


def commands(build):
    """Returns the compiler options of each source of a build, by its path."""
    found = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        keep = [word for word in words if word.startswith(("-I", "-D", "-std="))]
        keep += [f"-isystem{after}" for word, after in zip(words, words[1:]) if word == "-isystem"]
        found[entry["file"]] = keep
    return found


def parse(source, options, contents):
    options = [*options, "-w", "-ferror-limit=0", "-include", str(Path(__file__).parent / "mutant.hpp")]
    unsaved = [(path, text.decode()) for path, text in contents.items()]
    return Index.create().parse(source, args=options, unsaved_files=unsaved,
                                options=TranslationUnit.PARSE_NONE)


# The files that this process has searched. A header holds the same changes for each source that includes it.
searched = set()


def found_in(source, options, texts):
    finders = {}
    unit = parse(source, options, {path: text for path, (_, text) in texts.items()})
    faults = [str(one) for one in unit.diagnostics if one.severity >= 3]
    sites.find(unit, {path: text for path, text in texts.items() if path not in searched}, finders)
    searched.update(finders)
    return {path: finder.found for path, finder in finders.items()}, faults


def refused_in(source, options, contents):
    """Returns the path, offset and text of each error that the compiler finds."""
    unit = parse(source, options, contents)
    return [(one.location.file.name if one.location.file else "", one.location.offset, one.spelling)
            for one in unit.diagnostics if one.severity >= 3]


class Rewriter:
    """Finds the changes and writes them. texts: path -> (name, bytes) of the files that may be changed.

    compiled: source -> its compiler options."""

    def __init__(self, texts, compiled):
        self.texts = texts
        self.compiled = compiled
        self.mutants = {}
        self.refused = []

    def run(self):
        """Returns the new bytes of each file."""
        with concurrent.futures.ProcessPoolExecutor(min(2, os.cpu_count() or 1)) as pool:
            self.collect(pool)
            return self.settle(pool)

    def over(self, pool, work, sources, *more):
        jobs = {source: pool.submit(work, source, self.compiled[source], *more) for source in sources}
        return {source: job.result() for source, job in jobs.items()}

    def collect(self, pool):
        known = set()
        for source, (found, faults) in self.over(pool, found_in, self.compiled, self.texts).items():
            if faults:
                raise SystemExit(f"mutants: {source} is not understood:\n" + "\n".join(faults[:5]))
            for path, mutants in found.items():
                for one in mutants:
                    if (path, one.start, one.end, one.now) not in known:
                        known.add((path, one.start, one.end, one.now))
                        self.mutants.setdefault(path, []).append(one)
        number(self.mutants.get(path, []) for path in sorted(self.texts))

    def settle(self, pool):
        doubtful = list(self.compiled)
        while True:
            new = {path: rewritten(text, self.mutants.get(path, [])) for path, (_, text) in self.texts.items()}
            contents = {path: text for path, (text, _) in new.items()}
            errors = self.over(pool, refused_in, doubtful, contents)
            doubtful = [source for source, found in errors.items() if found]
            if not doubtful:
                return contents
            self.take_out(new, {error for found in errors.values() for error in found})

    def take_out(self, new, errors):
        wrong = set()
        for path, offset, _ in errors:
            text, ranges = new.get(path, (b"", {}))
            around = [(end - start, number) for number, (start, end) in ranges.items() if start <= offset <= end]
            # The error of a macro's expansion may lie in front of the change: then any of its line may be wrong.
            head, tail = text.rfind(b"\n", 0, offset) + 1, text.find(b"\n", offset)
            of_line = {number for number, (start, end) in ranges.items() if start <= tail and end >= head}
            wrong |= {min(around)[1]} if around else of_line
        if not wrong:
            raise SystemExit(f"mutants: errors outside of all changes: {sorted(errors)[:5]}")
        for path, mutants in self.mutants.items():
            self.refused += [one for one in mutants if one.number in wrong]
            self.mutants[path] = [one for one in mutants if one.number not in wrong]

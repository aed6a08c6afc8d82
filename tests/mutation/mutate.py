#!/usr/bin/env python3
"""Makes small wrong changes to the daemon's sources, one at a time, and tells which of them the
unit tests do not notice.

A mutant is compiled by itself and linked in front of the library of the right objects, so that it
costs one compilation, one link and as much of the tests as it takes to fail. A header's mutant is
compiled with every source of the daemon that includes it; the tests keep the right header. Nothing
in the tree is changed: mutants live in the build folder, one place for each worker. Mutants that do
not compile do not count.
"""

import argparse
import json
import os
import random
import re
import shlex
import shutil
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path
from queue import Queue

ROOT = Path(__file__).resolve().parents[2]
SOURCES = ROOT / "src"
TESTS = "product_test"
LIBRARY = "src/libqorext_product.a"
GOAL = 90  # per cent

SWAPS = {
    " == ": " != ", " != ": " == ", " < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ",
    " && ": " || ", " || ": " && ", " + ": " - ", " - ": " + ", "++": "--", "--": "++",
    "true": "false", "false": "true", "std::min": "std::max", "(!": "(", " & ": " | ",
    " << ": " >> ", " >> ": " << ", "continue;": "break;", "break;": "continue;",
}
SWAP = re.compile("|".join(re.escape(word) if not word.isalpha() else rf"\b{word}\b"
                           for word in sorted(SWAPS, key=len, reverse=True)))
NUMBER = re.compile(r"(?<![\w.\"'])(0[xX][0-9A-Fa-f]+|\d+)(?=[UL]*\b)(?![\w.\"'])")
STATEMENT = re.compile(r"^(\s+)(?!return\b|case\b|using\b|break\b|continue\b|goto\b)"
                       r"([A-Za-z_][\w.:\[\]>-]*(\(.*\)| [|&+-]?= .*)|[+-]{2}\w+);$")
LOG = re.compile(r'^(\s+LOG[ED]\("(?:[^"\\]|\\.)*", )(.*)(\);)$')
IGNORED = re.compile(r"^\s*(//|#|static_assert|namespace|template|using|\*)")


@dataclass
class Mutant:
    file: Path
    line: int  # from 0
    text: str  # what the line becomes

    def describe(self, lines):
        return (f"{self.file.relative_to(ROOT)}:{self.line + 1}\n"
                f"  - {lines[self.line].strip()}\n  + {self.text.strip()}")


def split_arguments(text):
    """Splits at the commas that stand in no brackets."""
    parts, depth, start = [], 0, 0
    for at, character in enumerate(text):
        depth += (character in "([{") - (character in ")]}")
        if character == "," and depth == 0:
            parts.append(text[start:at].strip())
            start = at + 1
    return parts + [text[start:].strip()]


def without_texts(line):
    """The line with the characters of string literals and comments blanked out."""
    blank = lambda match: '"' + " " * (len(match.group()) - 2) + '"'
    line = re.sub(r'"(?:[^"\\]|\\.)*"', blank, line)
    return line.split("//")[0]


def replaced(line, match, text):
    return line[:match.start()] + text + line[match.end():]


def next_number(text):
    """The number behind this one, in the same notation."""
    if text.lower().startswith("0x"):
        return hex(int(text, 16) + 1)
    if len(text) > 1 and text[0] == "0":
        return f"0{int(text, 8) + 1:o}"
    return str(int(text) + 1)


def mutations(line):
    """Every line that one small change makes of this one."""
    code = without_texts(line)
    if IGNORED.match(line) or not code.strip():
        return
    for match in SWAP.finditer(code):
        yield replaced(line, match, SWAPS[match.group()])
    for match in NUMBER.finditer(code):
        yield replaced(line, match, next_number(match.group()))
    if statement := STATEMENT.match(line):
        yield statement.group(1) + ";"
    if log := LOG.match(line):
        arguments = split_arguments(log.group(2))
        if len(arguments) > 1 and arguments[0] != arguments[1]:
            arguments[0], arguments[1] = arguments[1], arguments[0]
            yield log.group(1) + ", ".join(arguments) + log.group(3)


def mutants_of(file):
    for number, line in enumerate(file.read_text().split("\n")):
        for text in mutations(line):
            yield Mutant(file, number, text)


class Build:
    """How the release build compiles each source and links the tests."""

    def __init__(self, folder):
        self.folder = folder
        commands = json.loads((folder / "compile_commands.json").read_text())
        self.commands = {}
        for command in commands:  # the daemon's own main has a command of its own; tests come later
            self.commands[Path(command["file"])] = command
        self.link = self.ninja("commands", TESTS).strip().split("\n")[-1]
        self.sources = self.sources_by_header()

    def ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", self.folder, "-t", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def sources_by_header(self):
        """The daemon's sources that each header is part of, whatever includes it."""
        found = {}
        for record in self.ninja("deps").split("\n\n"):
            files = [self.folder / line.strip() for line in record.split("\n")[1:]]
            sources = [file for file in files if file.suffix == ".cpp" and SOURCES in file.parents]
            for file in files if sources else []:
                found.setdefault(file, set()).add(sources[0])
        return found

    def compile(self, source, text, overlay, output):
        """Compiles this text in the source's place, with the overlay's headers before all others."""
        words = shlex.split(self.commands[source]["command"])
        words = [str(text) if word == str(source) else word for word in words]
        words = [word for word in words if word not in ("-Werror", "-O2", "-g1")]
        words[words.index("-o") + 1] = str(output)
        first_folder = next(at for at, word in enumerate(words) if word.startswith("-I"))
        words.insert(first_folder, f"-I{overlay}")
        return subprocess.run(words + ["-O1", "-w"], cwd=self.folder, capture_output=True).returncode == 0

    def compile_mutant(self, file, content, place):
        """The mutant's objects by the sources that they stand for; None when one does not compile."""
        overlay = place / "include"
        text = overlay / file.relative_to(SOURCES)
        text.parent.mkdir(parents=True, exist_ok=True)
        text.write_text(content)
        objects = {}
        for source in [file] if file.suffix == ".cpp" else sorted(self.sources[file]):
            objects[source] = place / f"mutant-{len(objects)}.o"
            if not self.compile(source, text if source == file else source, overlay, objects[source]):
                return None
        return objects

    def link_tests(self, objects, program):
        command = self.link.replace(f" -o tests/{TESTS} ", f" -o {program} ")
        for source, mutant_object in objects.items():
            own = self.object_of(source)
            if own in command.split():
                command = command.replace(own, str(mutant_object))
            else:
                command = command.replace(f" {LIBRARY}", f" {mutant_object} {LIBRARY}", 1)
        subprocess.run(command, shell=True, cwd=self.folder, check=True, capture_output=True)

    def object_of(self, source):
        words = shlex.split(self.commands[source]["command"])
        return words[words.index("-o") + 1]


def passes(program, patience):
    try:
        done = subprocess.run([program, "--gtest_fail_fast", "--gtest_brief=1"], cwd=program.parent,
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=patience)
    except subprocess.TimeoutExpired:
        return False
    return done.returncode == 0


def judge(build, mutant, place, patience):
    """"caught", "missed" or "not compiled"."""
    lines = mutant.file.read_text().split("\n")
    lines[mutant.line] = mutant.text
    shutil.rmtree(place)
    place.mkdir()
    objects = build.compile_mutant(mutant.file, "\n".join(lines), place)
    if objects is None:
        return "not compiled"
    program = place / TESTS
    build.link_tests(objects, program)
    return "missed" if passes(program, patience) else "caught"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("files", nargs="*", type=Path, help="sources; all of src/ without any")
    parser.add_argument("--count", type=int, help="so many mutants, drawn by chance; all without it")
    parser.add_argument("--seed", type=int, default=1, help="of the draw")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build", type=Path, default=ROOT / "build/release")
    return parser.parse_args()


def chosen_mutants(arguments):
    files = [file.resolve() for file in arguments.files] or sorted(
        file for file in SOURCES.rglob("*") if file.suffix in (".cpp", ".h"))
    mutants = [mutant for file in files for mutant in mutants_of(file)]
    if arguments.count is None or arguments.count >= len(mutants):
        return mutants
    return random.Random(arguments.seed).sample(mutants, arguments.count)


def judge_all(build, mutants, jobs, patience):
    places = Queue()
    for number in range(jobs):
        place = build.folder / "mutation" / str(number)
        place.mkdir(parents=True, exist_ok=True)
        places.put(place)

    def run(mutant):
        place = places.get()
        try:
            return mutant, judge(build, mutant, place, patience)
        finally:
            places.put(place)

    with ThreadPoolExecutor(jobs) as workers:
        for mutant, verdict in workers.map(run, mutants):
            if verdict == "missed":
                print("missed", mutant.describe(mutant.file.read_text().split("\n")), flush=True)
            yield verdict


def main():
    arguments = parse_arguments()
    build = Build(arguments.build)
    mutants = chosen_mutants(arguments)
    started = time.monotonic()
    if not passes(build.folder / "tests" / TESTS, None):
        sys.exit(f"{TESTS} fails as it is")
    patience = 10 + 5 * (time.monotonic() - started)

    started = time.monotonic()
    verdicts = list(judge_all(build, mutants, arguments.jobs, patience))
    seconds = time.monotonic() - started
    caught, missed = verdicts.count("caught"), verdicts.count("missed")
    share = 100 * caught / max(1, caught + missed)
    print(f"{caught} of {caught + missed} mutants caught ({share:.0f} %), "
          f"{verdicts.count('not compiled')} did not compile, {seconds:.0f} s")
    sys.exit(0 if share >= GOAL else 1)


if __name__ == "__main__":
    main()

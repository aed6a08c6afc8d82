#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes small wrong changes to the daemon's sources, one at a time, and lists those that the unit
tests do not notice.

A mutant is compiled by itself and linked in front of the library of the right objects, so that it
costs one compilation, one link and as much of the tests as it takes to fail. A header's mutant is
compiled with every source of the daemon that includes it; the tests keep the right header. Nothing
in the tree is changed: mutants live in the build folder, one place for each worker. Mutants that do
not compile do not count, nor do those in survivors.txt: no test can notice them, for the reasons
given there.
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
TARGETS = ("qorext_product", TESTS)  # not the daemon itself, whose main is the program's
SURVIVORS = Path(__file__).with_name("survivors.txt")
MEMORY = Path("/dev/shm")  # where the tests' files cost no disk
GOAL = 98  # per cent

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
# Calls that are seen outside: two of them are not one, and their order counts.
CALL = re.compile(r"^\s+([\w.]*[._])?(LOG[ED]|\w*[Ss]end\w*|\w*[Ww]rite\w*|f?sync|forward|hand_off|"
                  r"chown|chmod|unlink|rename|property_set|\w*wait\w*|\w*release|\w*create\w*)"
                  r"\(.*\);$")
GUARD = re.compile(r"^(\s+)(if \(.*\) [^{]*;)$")
WHOLE = re.compile(r"^\s+(?!case\b|default\b|using\b)[^\s].*;$")
LEAVES = re.compile(r"^\s+(return|break|continue)\b")
LOG = re.compile(r'^(\s+LOG[ED]\("(?:[^"\\]|\\.)*", )(.*)(\);)$')
# Changes that a person makes in good faith: what is looked for, and what it becomes.
SLIPS = [(re.compile(pattern), text) for pattern, text in (
    (r" \| O_(?!CLOEXEC)\w+", ""),  # nothing is executed
    (r"\bO_(?!RDONLY)\w+ \| ", ""),  # which is zero
    (r"QMI_IDL_INDICATION", "QMI_IDL_RESPONSE"),
    (r" == k\w+", " != 0"),
    (r" != (0|k\w+)\b", " == 1"),
    (r"\bsizeof (\w[\w.]*)\b(?!, \")", r"(sizeof \1 - 1)"),  # texts have room to spare
    (r"\bwhile \(", "if ("),
    (r"\batoi\(([^()]*)\)", r"static_cast<int>(strtol(\1, nullptr, 0))"),
    (r"\bstatic_cast<(u?)int(16|32)_t>", r"static_cast<\1int8_t>"),
    (r"\bstatic_cast<size_t>", "static_cast<uint8_t>"),
    (r"\bmemcpy\(([^,]*), ", r"strncpy((char*)(\1), (const char*)"),
    (r"\bEINTR\b", "EAGAIN"),
    (r"\bLOGE\(", "LOGD("),
    (r"\bLOGD\(", "LOGE("),
)]
FAILED = re.compile(r"^\[  FAILED  \] ([\w/]+)\.", re.M)
EXTRA_LOG = ' LOGE("extra");'
IGNORED = re.compile(r"^\s*(//|#|static_assert|namespace|template|using|\*)")
INDENTED = re.compile(r"^\s+")


@dataclass
class Mutant:
    file: Path
    line: int  # from 0
    text: str  # what the line becomes
    taken: int = 1  # how many lines it replaces

    def content(self):
        lines = self.file.read_text().split("\n")
        lines[self.line:self.line + self.taken] = [self.text]
        return "\n".join(lines)

    def change(self):
        """The file and what changes in it, wherever that is."""
        lines = self.file.read_text().split("\n")
        old = [f"  - {line.strip()}" for line in lines[self.line:self.line + self.taken]]
        new = [f"  + {line.strip()}" for line in self.text.split("\n")]
        return "\n".join([str(self.file.relative_to(ROOT)), *old, *new])


def known_survivors():
    """The changes in survivors.txt, without their reasons."""
    blocks = re.split(r"\n{2,}", SURVIVORS.read_text().strip())
    return {re.sub(r"\n  = .*", "", block, flags=re.S) for block in blocks if block[0] != "#"}


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
    """The number after this one, in the same notation."""
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
    for slip, text in SLIPS:
        for match in slip.finditer(code):
            yield replaced(line, match, match.expand(text))
    if statement := STATEMENT.match(line) or GUARD.match(line):
        yield statement.group(1) + ";"
    if CALL.match(line):
        yield line + line.strip()
    if log := LOG.match(line):
        arguments = split_arguments(log.group(2))
        if len(arguments) > 1 and arguments[0] != arguments[1]:
            arguments[0], arguments[1] = arguments[1], arguments[0]
            yield log.group(1) + ", ".join(arguments) + log.group(3)


def may_be_followed(line, before):
    """Whether a statement can come after this line: it ends one itself, and goes on from there."""
    is_whole = WHOLE.match(line) and before.rstrip().endswith((";", "{", "}", ":"))
    return is_whole and not LEAVES.match(line)


def mutants_of(file):
    lines = file.read_text().split("\n")
    for number, line in enumerate(lines):
        for text in mutations(line):
            yield Mutant(file, number, text)
        if file.suffix == ".cpp" and may_be_followed(line, lines[number - 1]):
            yield Mutant(file, number, line + EXTRA_LOG)
    for number, (line, after) in enumerate(zip(lines, lines[1:])):
        same_block = INDENTED.match(line) and INDENTED.findall(line) == INDENTED.findall(after)
        if same_block and CALL.match(line) and CALL.match(after) and line != after:
            yield Mutant(file, number, f"{after}\n{line}", taken=2)


class Build:
    """How the release build compiles each source and links the tests."""

    def __init__(self, folder):
        self.folder = folder
        commands = json.loads((folder / "compile_commands.json").read_text())
        self.commands = {Path(command["file"]): command for command in commands
                         if any(f"/{target}.dir/" in command["command"] for target in TARGETS)}
        self.link = self.ninja("commands", TESTS).strip().split("\n")[-1]
        self.sources = self.sources_by_header()

    def ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", self.folder, "-t", *arguments], check=True,
                              capture_output=True, text=True).stdout

    def sources_by_header(self):
        """The daemon's sources that each header is part of, whatever includes it."""
        found = {}
        for record in self.ninja("deps").split("\n\n"):
            files = [(self.folder / line.strip()).resolve() for line in record.split("\n")[1:]]
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
        # Every mutant may log, copy texts and read numbers.
        for header in ("src/host/base/log.h", "string.h", "stdlib.h"):
            words += ["-include", header]
        # A header's functions must be inlined: the linker would take the tests' copies of them.
        words += ["-w", "-O0" if text == overlay / source.relative_to(ROOT) else "-O1"]
        return subprocess.run(words, cwd=self.folder, capture_output=True).returncode == 0

    def compile_mutant(self, file, content, place):
        """The mutant's objects by the sources that they stand for; None when one does not compile."""
        overlay = place / "include"
        text = overlay / file.relative_to(ROOT)
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


def failing_suite(program, patience, suites):
    """Runs tests of these suites up to the first that fails. The suite of that one, an empty text
    when none can be named, or None when all pass."""
    environment = os.environ | ({"TEST_TMPDIR": str(MEMORY)} if MEMORY.is_dir() else {})
    tests = ":".join(f"{suite}.*" for suite in suites)
    try:
        done = subprocess.run(
            [program, "--gtest_fail_fast", "--gtest_brief=1", f"--gtest_filter={tests}"],
            cwd=program.parent, stdin=subprocess.DEVNULL, capture_output=True, env=environment,
            timeout=patience)
    except subprocess.TimeoutExpired:
        return ""
    failed = FAILED.search(done.stdout.decode(errors="replace"))
    return None if done.returncode == 0 else failed.group(1) if failed else ""


class Judge:
    """Runs those tests first that have noticed an earlier mutant of the same file."""

    def __init__(self, build, patience):
        self.build = build
        self.patience = patience
        self.noticed = {}  # suites by file

    def is_caught(self, file, program):
        known = self.noticed.setdefault(file, [])
        if known and failing_suite(program, self.patience, list(known)) is not None:
            return True
        suite = failing_suite(program, self.patience, ["*"])
        if suite:
            known.append(suite)
        return suite is not None

    def verdict(self, mutant, place):
        """"caught", "missed" or "not compiled"."""
        shutil.rmtree(place)
        place.mkdir()
        objects = self.build.compile_mutant(mutant.file, mutant.content(), place)
        if objects is None:
            return "not compiled"
        program = place / TESTS
        self.build.link_tests(objects, program)
        return "caught" if self.is_caught(mutant.file, program) else "missed"


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
    known = known_survivors()
    mutants = [mutant for file in files for mutant in mutants_of(file)
               if mutant.change() not in known]
    if arguments.count is None or arguments.count >= len(mutants):
        return mutants
    return random.Random(arguments.seed).sample(mutants, arguments.count)


def judge_all(judge, mutants, jobs):
    places = Queue()
    for number in range(jobs):
        place = judge.build.folder / "mutation" / str(number)
        place.mkdir(parents=True, exist_ok=True)
        places.put(place)

    def run(mutant):
        place = places.get()
        try:
            return mutant, judge.verdict(mutant, place)
        finally:
            places.put(place)

    with ThreadPoolExecutor(jobs) as workers:
        for mutant, verdict in workers.map(run, mutants):
            if verdict == "missed":
                print(f"\nline {mutant.line + 1} of {mutant.change()}", flush=True)
            yield verdict


def main():
    arguments = parse_arguments()
    build = Build(arguments.build)
    mutants = chosen_mutants(arguments)
    started = time.monotonic()
    if failing_suite(build.folder / "tests" / TESTS, None, ["*"]) is not None:
        sys.exit(f"{TESTS} fails as it is")
    judge = Judge(build, patience=10 + 5 * (time.monotonic() - started))

    started = time.monotonic()
    verdicts = list(judge_all(judge, mutants, arguments.jobs))
    seconds = time.monotonic() - started
    caught, missed = verdicts.count("caught"), verdicts.count("missed")
    share = 100 * caught / max(1, caught + missed)
    print(f"{caught} of {caught + missed} mutants caught ({share:.1f} %), "
          f"{verdicts.count('not compiled')} did not compile, {seconds:.0f} s")
    sys.exit(0 if share >= GOAL else 1)


if __name__ == "__main__":
    main()

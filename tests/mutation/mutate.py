#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes small wrong changes (mutants) in the daemon's sources, one at a time, and lists those that
the unit tests do not detect.

A mutant is compiled separately and linked before the library of the original objects, so that it
costs one compilation, one link and the tests up to the first failure. A header's mutant is compiled
with every source of the daemon that includes it; the tests use the original header. The tree is not
changed: mutants are in the build folder, in one folder for each worker. Mutants that do not compile
are not counted, nor are those in survivors.txt, which no test can detect for the reasons there.
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
TARGETS = ("qorext_product", TESTS)  # not the daemon itself: the tests have their own main
SURVIVORS = Path(__file__).with_name("survivors.txt")
MEMORY = Path("/dev/shm")  # keeps the tests' files off the disk
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
# Calls with visible effects: their number and order matter.
CALL = re.compile(r"^\s+([\w.]*[._])?(LOG[ED]|\w*[Ss]end\w*|\w*[Ww]rite\w*|f?sync|forward|hand_off|"
                  r"chown|chmod|unlink|rename|property_set|\w*wait\w*|\w*release|\w*create\w*)"
                  r"\(.*\);$")
GUARD = re.compile(r"^(\s+)(if \(.*\) [^{]*;)$")
WHOLE = re.compile(r"^\s+(?!case\b|default\b|using\b)[^\s].*;$")
LEAVES = re.compile(r"^\s+(return|break|continue)\b")
LOG = re.compile(r'^(\s+LOG[ED]\("(?:[^"\\]|\\.)*", )(.*)(\);)$')
# Typical mistakes: the pattern and its replacement.
SLIPS = [(re.compile(pattern), text) for pattern, text in (
    (r" \| O_(?!CLOEXEC)\w+", ""),  # the tests execute no program
    (r"\bO_(?!RDONLY)\w+ \| ", ""),  # which is zero
    (r"QMI_IDL_INDICATION", "QMI_IDL_RESPONSE"),
    (r" == k\w+", " != 0"),
    (r" != (0|k\w+)\b", " == 1"),
    (r"\bsizeof (\w[\w.]*)\b(?!, \")", r"(sizeof \1 - 1)"),  # texts are shorter than their buffers
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
    text: str  # the line after the change
    replaced: int = 1  # the number of lines replaced

    def content(self):
        lines = self.file.read_text().split("\n")
        lines[self.line:self.line + self.replaced] = [self.text]
        return "\n".join(lines)

    def change(self):
        """The file and the changed lines, without their line numbers."""
        lines = self.file.read_text().split("\n")
        old = [f"  - {line.strip()}" for line in lines[self.line:self.line + self.replaced]]
        new = [f"  + {line.strip()}" for line in self.text.split("\n")]
        return "\n".join([str(self.file.relative_to(ROOT)), *old, *new])


def known_survivors():
    """Returns the changes in survivors.txt, without their reasons."""
    blocks = re.split(r"\n{2,}", SURVIVORS.read_text().strip())
    return {re.sub(r"\n  = .*", "", block, flags=re.S) for block in blocks if block[0] != "#"}


def split_arguments(text):
    """Splits at the commas outside brackets."""
    parts, depth, start = [], 0, 0
    for at, character in enumerate(text):
        depth += (character in "([{") - (character in ")]}")
        if character == "," and depth == 0:
            parts.append(text[start:at].strip())
            start = at + 1
    return parts + [text[start:].strip()]


def without_texts(line):
    """Returns the line without the characters of string literals and comments."""
    blank = lambda match: '"' + " " * (len(match.group()) - 2) + '"'
    line = re.sub(r'"(?:[^"\\]|\\.)*"', blank, line)
    return line.split("//")[0]


def replaced(line, match, text):
    return line[:match.start()] + text + line[match.end():]


def next_number(text):
    """Returns the next number in the same notation."""
    if text.lower().startswith("0x"):
        return hex(int(text, 16) + 1)
    if len(text) > 1 and text[0] == "0":
        return f"0{int(text, 8) + 1:o}"
    return str(int(text) + 1)


def mutations(line):
    """Yields every mutant of the line."""
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
    """Returns whether a statement can follow: the line ends a statement and does not leave the block."""
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
            yield Mutant(file, number, f"{after}\n{line}", replaced=2)


class Build:
    """The commands of the release build that compile each source and link the tests."""

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
        """Returns the daemon's sources that include each header, directly or not."""
        found = {}
        for record in self.ninja("deps").split("\n\n"):
            files = [(self.folder / line.strip()).resolve() for line in record.split("\n")[1:]]
            sources = [file for file in files if file.suffix == ".cpp" and SOURCES in file.parents]
            for file in files if sources else []:
                found.setdefault(file, set()).add(sources[0])
        return found

    def compile(self, source, text, overlay, output):
        """Compiles `text` instead of the source, with the overlay's headers before all others."""
        words = shlex.split(self.commands[source]["command"])
        words = [str(text) if word == str(source) else word for word in words]
        words = [word for word in words if word not in ("-Werror", "-O2", "-g1")]
        words[words.index("-o") + 1] = str(output)
        first_folder = next(at for at, word in enumerate(words) if word.startswith("-I"))
        words.insert(first_folder, f"-I{overlay}")
        # Mutants can add log messages, string copies and number conversions.
        for header in ("src/host/base/log.h", "string.h", "stdlib.h"):
            words += ["-include", header]
        # A header's functions must be inlined: the linker would use the tests' copies of them.
        words += ["-w", "-O0" if text == overlay / source.relative_to(ROOT) else "-O1"]
        return subprocess.run(words, cwd=self.folder, capture_output=True).returncode == 0

    def compile_mutant(self, file, content, place):
        """Returns the mutant's object for each source, or None if one does not compile."""
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


def failing_suite(program, timeout, suites):
    """Runs the suites up to the first failure. Returns the failed suite, "" if it is unknown, or None
    if all tests pass."""
    environment = os.environ | ({"TEST_TMPDIR": str(MEMORY)} if MEMORY.is_dir() else {})
    tests = ":".join(f"{suite}.*" for suite in suites)
    try:
        done = subprocess.run(
            [program, "--gtest_fail_fast", "--gtest_brief=1", f"--gtest_filter={tests}"],
            cwd=program.parent, stdin=subprocess.DEVNULL, capture_output=True, env=environment,
            timeout=timeout)
    except subprocess.TimeoutExpired:
        return ""
    failed = FAILED.search(done.stdout.decode(errors="replace"))
    return None if done.returncode == 0 else failed.group(1) if failed else ""


class Checker:
    """Runs those tests first that have detected an earlier mutant of the same file."""

    def __init__(self, build, timeout):
        self.build = build
        self.timeout = timeout
        self.detecting = {}  # suites by file

    def is_caught(self, file, program):
        known = self.detecting.setdefault(file, [])
        if known and failing_suite(program, self.timeout, list(known)) is not None:
            return True
        suite = failing_suite(program, self.timeout, ["*"])
        if suite:
            known.append(suite)
        return suite is not None

    def check(self, mutant, place):
        """Returns "caught", "missed" or "not compiled"."""
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
    parser.add_argument("files", nargs="*", type=Path, help="sources (default: all of src/)")
    parser.add_argument("--count", type=int, help="number of mutants, selected at random (default: all)")
    parser.add_argument("--seed", type=int, default=1, help="seed of the selection (default: 1)")
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


def check_all(checker, mutants, jobs):
    places = Queue()
    for number in range(jobs):
        place = checker.build.folder / "mutation" / str(number)
        place.mkdir(parents=True, exist_ok=True)
        places.put(place)

    def run(mutant):
        place = places.get()
        try:
            return mutant, checker.check(mutant, place)
        finally:
            places.put(place)

    with ThreadPoolExecutor(jobs) as workers:
        for mutant, result in workers.map(run, mutants):
            if result == "missed":
                print(f"\nline {mutant.line + 1} of {mutant.change()}", flush=True)
            yield result


def main():
    arguments = parse_arguments()
    build = Build(arguments.build)
    mutants = chosen_mutants(arguments)
    started = time.monotonic()
    if failing_suite(build.folder / "tests" / TESTS, None, ["*"]) is not None:
        sys.exit(f"{TESTS} fails without a mutant")
    checker = Checker(build, timeout=10 + 5 * (time.monotonic() - started))

    started = time.monotonic()
    results = list(check_all(checker, mutants, arguments.jobs))
    seconds = time.monotonic() - started
    caught, missed = results.count("caught"), results.count("missed")
    share = 100 * caught / max(1, caught + missed)
    print(f"{caught} of {caught + missed} mutants caught ({share:.1f} %), "
          f"{results.count('not compiled')} did not compile, {seconds:.0f} s")
    sys.exit(0 if share >= GOAL else 1)


if __name__ == "__main__":
    main()

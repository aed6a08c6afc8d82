# SPDX-License-Identifier: Apache-2.0
"""Summarizes the daemon's system calls, as strace has recorded them, for the repository.

A line of the record is one kind of call: name, object, flags, and the error if it fails.
"""

import pathlib
import re
import tarfile

import seccomp

HERE = pathlib.Path(__file__).resolve().parent
RECORD = HERE / "recorded_calls"

DAEMON = "/system/bin/qorext_client"
HEAD = """\
# SPDX-License-Identifier: Apache-2.0
# The system calls of the daemon in the handset: "./dev handset --record-calls" writes this file.
# A line is a call, its object, its flags, and its error if it fails.
"""

CALL = re.compile(r"(\w+)\((.*)\) += (-?\w+|\?)(?:<[^>]*>)?(?: (E\w+))?")
FILE = re.compile(r'"([^"]*)"')
DESCRIPTOR = re.compile(r"^(\d+)<([^>]*)>")
MAPPED = re.compile(r" (\d+)<([^>]*)>, 0(?:x[0-9a-f]+)?$")
FLAG = re.compile(r"\b(O_[A-Z_]+|AT_(?:SYMLINK_NOFOLLOW|EMPTY_PATH|REMOVEDIR)|PROT_[A-Z]+|MAP_SHARED"
                  r"|F_[A-Z_]+|PR_[A-Z_]+|CLONE_THREAD|SOL_[A-Z]+|SO_[A-Z_]+|AF_[A-Z0-9]+)\b")
OF_PATHS = set("execve faccessat fchmodat fchownat linkat mkdirat newfstatat openat readlinkat "
               "renameat symlinkat unlinkat".split())
# Errors that depend on the time only.
INTERRUPTED = {"EAGAIN", "EINTR", "ERESTARTSYS", "ERESTARTNOHAND", "ERESTART_RESTARTBLOCK"}

# Names that stay the same in every run.
CLASSES = [(re.compile(pattern), name) for pattern, name in (
    (r"^/phone(?=/)", ""),
    (r"^/data/vendor/vorn", "/data/vorn"),
    (r"^/data/vorn/~vorn\d{4}\.log$", "/data/vorn/~vornNNNN.log"),
    (r"^/data/vorn/vorn_\w+\.log$", "/data/vorn/vorn_TIME.log"),
    (r"^/data/vorn/\.\d{4}$", "/data/vorn/.NNNN"),
    (r"^/data/vorn/(?!~vornNNNN|vorn_TIME|\.NNNN|\.new$).+$", "/data/vorn/OTHER"),
    (r"^/data/system/dropbox/.+$", "/data/system/dropbox/ENTRY"),
    (r"^/dev/__properties__/\..*$", "/dev/__properties__/TEMPORARY"),
    (r"^/dev/vd[a-z]$", "/dev/block/bootdevice/by-name/dhob"),
    (r"^/etc/ld\.so\..*$", "LIBRARY_CACHE"),
    (r"^/.*\.so[.\d]*$", "LIBRARY"),
    (r"^/.*/usr/lib(?:/.*)?$|^(?:/usr)?/lib(?:/.*)?$", "LIBRARY_FOLDER"),
    (r"^pipe:\[\d+\]$", "PIPE"),
    (r"^socket:\[\d+\]$", "QRTR"),
    (r"^anon_inode:\[(\w+)\]$", r"EVENTS"),
)]


def kind_of(name):
    for pattern, replacement in CLASSES:
        name = pattern.sub(replacement, name)
    return name


def kind_of_descriptor(number, name):
    """The log of the handset's library goes to the standard error output."""
    return "LOG" if number == "2" else kind_of(name)


def objects(call, arguments):
    """Returns the files or the descriptor that the call uses."""
    if call == "close":
        return []
    if call == "socket":
        return ["QRTR"] if arguments.startswith("AF_QIPCRTR") else []
    files = [kind_of(name) for name in FILE.findall(arguments) if name]
    if files and call in OF_PATHS:
        # The first argument of execve is the file, that of symlinkat the link's content.
        return files[:1] if call == "execve" else files[call == "symlinkat":]
    descriptor = MAPPED.search(arguments) if call == "mmap" else DESCRIPTOR.search(arguments)
    return [kind_of_descriptor(*descriptor.groups())] if descriptor else []


def summary(line):
    """Returns the line of the record for a line of strace, or None for a line without a call."""
    found = CALL.match(line)
    if not found:
        return None
    call, arguments, result, error = found.groups()
    plain = FILE.sub('""', re.sub(r"<[^>]*>", "", arguments))
    flags = "|".join(dict.fromkeys(FLAG.findall(plain)))
    failure = f"= {error}" if result == "-1" and error and error not in INTERRUPTED else ""
    return " ".join(filter(None, [call, *objects(call, arguments), flags, failure]))


def calls_of_daemon(lines):
    """Leaves out the calls of the program that starts the daemon in the process."""
    for number, line in enumerate(lines):
        if line.startswith(f'execve("{DAEMON}"'):
            return lines[number:]
    return lines


def summarize(traces):
    """Returns the sorted lines of the record for the traces, one for each thread."""
    found = {summary(line) for trace in traces for line in calls_of_daemon(trace.splitlines())}
    return sorted(found - {None})


def read(record=RECORD):
    """Returns the record's lines."""
    return [line for line in record.read_text().splitlines() if not line.startswith("#")]


def names(lines):
    return {line.split()[0] for line in lines}


def store(disk):
    """Writes the record and the policy from the disk with the traces of a run."""
    with tarfile.open(disk) as archive:
        traces = [archive.extractfile(entry).read().decode(errors="replace")
                  for entry in archive if entry.isfile()]
    lines = summarize(traces)
    RECORD.write_text(HEAD + "".join(f"{line}\n" for line in lines))
    seccomp.POLICY.write_text(seccomp.policy(names(lines)))
    print(f"handset: recorded {len(lines)} kinds of calls in {len(traces)} threads")

# SPDX-License-Identifier: Apache-2.0
"""The list of system calls that the daemon may use on a phone, from the recorded ones."""

import pathlib

POLICY = (pathlib.Path(__file__).resolve().parents[2] /
          "platform/android/seccomp/qorext_client.policy")

# Calls whose arguments are limited: threads but no processes, no memory that is writable and
# executable, local and QRTR sockets (minijail has no name for 42, AF_QIPCRTR). The arguments of
# clone3 are in memory, where a filter cannot read them; without it a C library uses clone.
NO_CODE = "arg2 in ~PROT_EXEC || arg2 in ~PROT_WRITE"
CONDITIONS = {
    "clone": "arg0 & CLONE_THREAD",
    "clone3": "return ENOSYS",
    "mmap": NO_CODE,
    "mprotect": NO_CODE,
    "socket": "arg0 == AF_UNIX || arg0 == 42",
}

# What the handset's libraries do not call, but a phone's do. A call that is recorded as well appears
# once, with the recorded ones.
PHONE = (
    ("bionic: loading the libraries", "fstat fstatfs lseek pread64 readlinkat"),
    ("bionic: closed standard descriptors at a change of the domain", "dup3 fcntl"),
    ("C libraries: threads", "clone clone3 gettid rt_sigprocmask set_tid_address"),
    ("bionic: the handler of crashes, abort()",
     "getpid prctl rt_sigaction rt_tgsigqueueinfo sigaltstack tgkill"),
    ("bionic: the allocator, names of mappings, the shadow of control flow integrity",
     "getrandom madvise mremap prctl sched_getaffinity sched_yield"),
    ("bionic: rename() of later releases", "renameat2"),
    ("bionic: sleep() and time(); waits that a signal has interrupted",
     "clock_gettime gettimeofday nanosleep restart_syscall rt_sigreturn"),
    ("liblog: the socket of logd", "connect socket writev"),
    ("bionic: the property areas and the property service",
     "connect faccessat ppoll recvfrom sendto socket writev"),
)

HEAD = """\
# SPDX-License-Identifier: Apache-2.0
# The system calls of qorext_client on arm64, for minijail. Every other call ends the process.
# "./dev handset --record-calls" writes this file.
"""


def rule(call):
    return f"{call}: {CONDITIONS.get(call, '1')}\n"


def policy(recorded):
    """Returns the text of the policy for a set of recorded calls."""
    text = HEAD + "\n# Recorded in the handset.\n" + "".join(map(rule, sorted(recorded)))
    listed = set(recorded)
    for reason, calls in PHONE:
        more = sorted(set(calls.split()) - listed)
        listed.update(more)
        if more:
            text += f"\n# {reason}.\n" + "".join(map(rule, more))
    return text

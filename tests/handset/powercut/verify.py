# SPDX-License-Identifier: Apache-2.0
"""What the handset reports about its KPI logs, and which packages are missing there."""

import dataclasses

import packages

CURRENT, PREVIOUS = ".0001", ".0002"


@dataclasses.dataclass
class Logs:
    """The KPI logs at one time: what the links name, and the content of every log."""

    links: dict = dataclasses.field(default_factory=dict)
    contents: dict = dataclasses.field(default_factory=dict)

    def count(self, data, is_linked):
        return sum(content.count(data) for name, content in self.contents.items()
                   if (name in self.links.values()) == is_linked)


def parse(report):
    """The Logs in a report, one after the other."""
    found, logs = [], Logs()
    # What stands in the place of a hole, or of bytes that were lost, is no part of a package.
    for part in report.replace(b"\0", b"").split(b"== ")[1:]:
        line, _, content = part.partition(b"\n")
        words = line.decode(errors="replace").split()
        if words[0] == "link":
            logs.links[words[1]] = words[2] if len(words) > 2 else ""
        elif words[0] == "log":
            logs.contents[words[1]] = content
        else:
            found.append(logs)
            logs = Logs()
    return found


def is_rotated_out(logs, log):
    """Whether the links name later logs than this one. Names are dates, so they sort by age."""
    return logs.links[CURRENT] > log and logs.links[PREVIOUS] > log


def fault_of(logs, number, log):
    """What is wrong with a package that was acknowledged in `log`; None when nothing is."""
    data = packages.content(number)
    linked, unlinked = logs.count(data, True), logs.count(data, False)
    if linked + unlinked > 1:
        return f"there {linked + unlinked} times"
    if linked == 1 or is_rotated_out(logs, log):
        return None
    names = ", ".join(f"{link} -> {target or 'missing'}" for link, target in logs.links.items())
    where = "in no log that a link names" if unlinked else "in no log"
    return f"{where} (acknowledged in {log}; {names})"


def faults(logs, acknowledged):
    """The faulty packages among those acknowledged (number: log), with what is wrong."""
    found = {number: fault_of(logs, number, log) for number, log in acknowledged.items()}
    return {number: fault for number, fault in found.items() if fault}


def described(found):
    """All faults in one line, with the first of them in full."""
    number, fault = next(iter(found.items()))
    return f"packages lost or doubled: {len(found)}; {number} is {fault}"

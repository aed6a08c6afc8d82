# SPDX-License-Identifier: Apache-2.0
"""Finds lost and duplicate packages in the handset's report about its KPI logs."""

import dataclasses

import packages

CURRENT, PREVIOUS = ".0001", ".0002"


@dataclasses.dataclass
class Logs:
    """The KPI logs at one time: the targets of the links, and the content of every log."""

    links: dict = dataclasses.field(default_factory=dict)
    contents: dict = dataclasses.field(default_factory=dict)

    def count(self, data, is_linked):
        return sum(content.count(data) for name, content in self.contents.items()
                   if (name in self.links.values()) == is_linked)


def parse(report):
    """Returns the consecutive Logs in a report."""
    found, logs = [], Logs()
    # The zeros of holes and of lost bytes are not part of a package.
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
    """Returns whether both links name later logs. Names are dates, so they sort by age."""
    return logs.links[CURRENT] > log and logs.links[PREVIOUS] > log


def fault_of(logs, number, log):
    """Returns the fault of a package that was acknowledged in `log`, or None."""
    data = packages.content(number)
    linked, unlinked = logs.count(data, True), logs.count(data, False)
    if linked + unlinked > 1:
        return f"stored {linked + unlinked} times"
    if linked == 1 or is_rotated_out(logs, log):
        return None
    names = ", ".join(f"{link} -> {target or 'missing'}" for link, target in logs.links.items())
    where = "in no log that a link names" if unlinked else "in no log"
    return f"{where} (acknowledged in {log}; {names})"


def faults(logs, acknowledged):
    """Returns the faults (number: text) of the acknowledged packages (number: log)."""
    found = {number: fault_of(logs, number, log) for number, log in acknowledged.items()}
    return {number: fault for number, fault in found.items() if fault}


def describe(found):
    """Returns one line with the number of faults and the first of them."""
    number, fault = next(iter(found.items()))
    return f"packages lost or duplicate: {len(found)}; {number} is {fault}"

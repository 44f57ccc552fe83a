# SPDX-License-Identifier: MIT
"""Makes the mutants of a C++ source: copies of it with one small fault each."""

import collections
import dataclasses

from faults import FAULTS
from source import Source


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    number: int  # of the line
    line: str  # its text
    operator: str
    change: str
    occurrence: int  # among the mutants of the file whose line, operator and change are the same
    start: int
    end: int
    replacement: str

    @property
    def identity(self):
        """Stays the same when the file is edited elsewhere."""
        return (self.file, self.line, self.operator, self.change, self.occurrence)

    def apply(self, text):
        return text[: self.start] + self.replacement + text[self.end :]

    def __str__(self):
        return f"{self.file}:{self.number}: {self.operator}: {self.change}"


def mutants_of(file, text):
    """Every mutant of a source, in the order of its lines."""
    source = Source(text)
    faults = {fault for make_faults in FAULTS for fault in make_faults(source)}
    seen = collections.Counter()
    mutants = []
    for start, end, operator, replacement in sorted(faults):
        line = text[text.rfind("\n", 0, start) + 1 :].partition("\n")[0].strip()
        change = f"{shortened(text[start:end])} -> {shortened(replacement)}"
        seen[line, operator, change] += 1
        number = text.count("\n", 0, start) + 1
        occurrence = seen[line, operator, change]
        mutants.append(Mutant(file, number, line, operator, change, occurrence, start, end, replacement))
    return mutants


def shortened(text):
    text = " ".join(text.split())
    return text if len(text) <= 60 else f"{text[:40]} ... {text[-15:]}"

# SPDX-License-Identifier: MIT
"""Power cuts: what of the write-ahead log, or of its transfer into the database, did not reach the disk."""

import shutil

from trial import CHANGES, checkpoint, expect

PAGE = 4096


def trial(programs, place, choose):
    bench = programs.copy(place)
    log = bench / "bench.sqlite-wal"
    history = [(0, programs.before)]
    for change in choose.sample(CHANGES, choose.randint(1, 6)):
        programs.change(bench, change)
        history.append((log.stat().st_size, programs.state(bench)))
    return choose.choice([cut_log, cut_transfer])(programs, bench, choose, history)


def cut_log(programs, bench, choose, history):
    """A commit whose end is in the log is there, one whose end is not has never been."""
    log = bench / "bench.sqlite-wal"
    content = log.read_bytes()
    cut = choose.randrange(len(content) + 1)
    lost = len(content) - cut
    tail = choose.choice([b"", bytes(lost), choose.randbytes(lost), choose.randbytes(min(lost, 512))])
    log.write_bytes(content[:cut] + tail)
    return check(programs, bench, choose, [state for size, state in history if size <= cut][-1], history)


def cut_transfer(programs, bench, choose, history):
    """Some pages have reached the database; the log is still whole."""
    database = bench / "bench.sqlite"
    old = database.read_bytes()
    moved = bench.with_name("moved")
    shutil.copytree(bench, moved)
    checkpoint(moved)
    new = (moved / "bench.sqlite").read_bytes()
    pages = [choose.choice([old, new])[at : at + PAGE] or bytes(PAGE) for at in range(0, len(new), PAGE)]
    database.write_bytes(b"".join(pages))
    return check(programs, bench, choose, history[-1][1], history)


def check(programs, bench, choose, expected, history):
    if choose.random() < 0.5:  # what SQLite keeps of the log in memory may be on the disk or not
        (bench / "bench.sqlite-shm").unlink(missing_ok=True)
    found = programs.state(bench)
    expect(found == expected, "lie", f"after a power cut: {found}, not {expected}")
    expect(programs.change(bench, ("add", "Pebble")), "lie", "after a power cut nothing can be changed any more")
    return "new" if expected == history[-1][1] else "old"

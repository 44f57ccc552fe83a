# SPDX-License-Identifier: MIT
"""Damaged databases: each command refuses in one line or answers exactly as if nothing were damaged."""

from trial import CHANGES, PEBBLE, expect

SECTOR, PAGE = 512, 4096


def trial(programs, place, choose):
    bench = programs.copy(place)
    database = bench / "bench.sqlite"
    content = bytearray(database.read_bytes())
    choose.choice([change_bytes, change_header, lose_row, lose_sector, cut, swap_pages])(content, choose)
    database.write_bytes(content)

    answers = 0
    for question in (("export",), ("list",), ("show", PEBBLE, "--json")):
        done = programs.run(bench, *question)
        right = programs.run(programs.template, *question)
        expect(done.returncode == 1 or done.stdout == right.stdout, "lie", f"{question}: {done.stdout.decode()}")
        answers += done.returncode == 0
    programs.run(bench, "list", "--timeout", "0", name="tarvo-firmware")
    programs.run(bench, "/Library/LaunchDaemons", name="host-tools/ls")
    change = choose.choice(CHANGES)
    is_done = programs.change(bench, change)
    found = programs.state(bench)
    known = [programs.after(change) if is_done else programs.before]
    if not is_done or change[0] == "remove":  # which takes a damaged drive off without a look at the others
        known.append(None)
    expect(found in known, "lie", f"{change} {'done' if is_done else 'refused'}: {found}")
    return ["refused", "answered in part", "answered in part", "answered"][answers]


def change_bytes(content, choose):
    for _ in range(choose.randint(1, 8)):
        content[choose.randrange(len(content))] ^= choose.choice([1 << choose.randrange(8), choose.randrange(256)])


def change_header(content, choose):
    """That of the file, or of a page: how many rows it has, and where they are."""
    start, size = choose.choice([(0, 100), (100, 24), *((page, 24) for page in range(PAGE, len(content), PAGE))])
    content[start + choose.randrange(size)] = choose.randrange(256)


def lose_row(content, choose):
    """Counts a row less in the page of the documents."""
    content[PAGE + 4] -= choose.randint(1, 3)


def lose_sector(content, choose):
    at = SECTOR * choose.randrange(len(content) // SECTOR)
    content[at : at + SECTOR] = choose.choice([bytes(SECTOR), choose.randbytes(SECTOR)])


def cut(content, choose):
    del content[choose.randrange(len(content)) :]


def swap_pages(content, choose):
    one, other = (PAGE * choose.randrange(len(content) // PAGE) for _ in range(2))
    content[one : one + PAGE], content[other : other + PAGE] = content[other : other + PAGE], content[one : one + PAGE]

"""Damaged databases: each command refuses in one line or answers exactly as if nothing were damaged."""

from trial import CHANGES, PEBBLE, expect

SECTOR, PAGE = 512, 4096


def trial(programs, place, choose):
    bench = programs.copy(place)
    database = bench / "bench.sqlite"
    content = bytearray(database.read_bytes())
    choose.choice([change_bytes, flip_bit, change_header, change_page_header, lose_row, lose_sector, cut, swap_pages])(
        content, choose)
    database.write_bytes(content)

    answers = 0
    for question in (("export",), ("list",), ("show", PEBBLE, "--json")):
        done = programs.run(bench, *question)
        right = programs.run(programs.template, *question)
        expect(done.returncode == 1 or done.stdout == right.stdout, "lie", f"{question}: {done.stdout.decode()}")
        answers += done.returncode == 0
    change = choose.choice(CHANGES)
    is_done = programs.change(bench, change)
    found = programs.state(bench)
    if is_done:
        # Who takes a drive off, or makes the bench anew, may not have looked at the others.
        known = (programs.after(change), None) if change[0] == "remove" else (programs.after(change),)
    else:
        known = (programs.before, None)
    expect(found in known, "lie", f"{change} {'done' if is_done else 'refused'}: {found}")
    return ["refused", "answered in part", "answered in part", "answered"][answers]


def change_bytes(content, choose):
    for _ in range(choose.randint(1, 8)):
        content[choose.randrange(len(content))] = choose.randrange(256)


def flip_bit(content, choose):
    content[choose.randrange(len(content))] ^= 1 << choose.randrange(8)


def change_header(content, choose):
    content[choose.randrange(100)] = choose.randrange(256)


def change_page_header(content, choose):
    """Where SQLite keeps how many rows a page has, and where they are."""
    content[choose.choice([100, *range(PAGE, len(content), PAGE)]) + choose.randrange(24)] = choose.randrange(256)


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

# SPDX-License-Identifier: MIT
"""Odd documents: init takes one as it is, or refuses it in one line and makes no bench."""

import copy
import json

from trial import expect

NUMBERS = [0, -1, 1, 2**31, 2**53, 2**53 + 1, 2**63, 2**64, -(2**63) - 1, 1.5, 1e308, float("nan"), float("inf")]
TEXTS = ["", "\0", "\x1b[2J", "\x85\x9b", "\ud800", "é", "→", "TV0001PEBBLE", "0x10", "\n" * 400, "a" * 5000]
OTHERS = [None, True, False, [], {}, [[]], {"": 0}, [{"fault": "report", "value": "modelName=\x1b[1m"}]]


def trial(programs, place, choose):
    document = json.loads(programs.run(programs.template, "export").stdout)
    bench, again, file = place / "bench", place / "again", place / "odd.json"
    file.write_bytes(choose.choices([odd_values, odd_bytes, odd_size], [75, 23, 2])[0](document, choose))
    if programs.run(bench, "init", "--from", file).returncode:
        expect(not (bench / "bench.sqlite").exists(), "lie", f"a refused document made a bench: {file}")
        return "refused"
    programs.run(bench, "list")
    exported = programs.run(bench, "export").stdout
    for drive in json.loads(exported)["drives"][:2]:
        programs.run(bench, "show", "".join(f"\\x{ord(letter):02X}" for letter in drive["serial"]))
    file.write_bytes(exported)
    programs.run(again, "init", "--from", file)
    expect(programs.run(again, "export").stdout == exported, "lie", f"not read as it was printed: {exported}")
    return "taken"


def odd_values(document, choose):
    for _ in range(choose.randint(1, 2)):
        at = document
        while True:
            keys = list(at) if isinstance(at, dict) else list(range(len(at)))
            key = choose.choice(keys) if keys else None
            if key is None or not isinstance(at[key], (dict, list)) or choose.random() < 0.1:
                break
            at = at[key]
        fitting = TEXTS if key is not None and isinstance(at[key], str) else NUMBERS
        value = copy.deepcopy(choose.choice(choose.choice([fitting, fitting, NUMBERS, TEXTS, OTHERS])))
        if isinstance(at, dict):
            change = choose.choice(["set", "set", "add", "remove", "remove"])
            at.update({choose.choice(TEXTS) if change == "add" or key is None else key: value})
            if change == "remove":
                at.pop(key, None)
        else:
            at.append(value)
    return json.dumps(document, ensure_ascii=choose.random() < 0.5).encode("utf-8", "surrogatepass")


def odd_bytes(document, choose):
    text = bytearray(json.dumps(document, indent=choose.choice([None, 4])).encode())
    for _ in range(choose.randint(1, 4)):
        at, length = choose.randrange(len(text)), choose.randint(0, 20)
        part = choose.choice([b"", choose.randbytes(length), text[:length], b'"', b"]", b"\\u0000", b"\xff", b"1e999"])
        text[at : at + choose.choice([0, 1, length])] = part
    return bytes(text)


def odd_size(document, choose):
    drive = document["drives"][0]
    members = dict.fromkeys(map(str, range(choose.choice([80_000, 1_000_000]))), 0)
    return choose.choice([
        lambda: b"[" * 200_000,
        lambda: b'{"drives":' * 100_000,
        lambda: json.dumps({**document, "drives": [{**drive, "serial": str(n)} for n in range(10_001)]}).encode(),
        lambda: json.dumps({**document, "drives": [{"serial": "A", "model": "Skiff", **members}]}).encode(),
        lambda: json.dumps({**document, "drives": [{**drive, "faults": drive["faults"] * 100_000}]}).encode(),
    ])()

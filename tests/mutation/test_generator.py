# SPDX-License-Identifier: MIT
"""The mutants of small sources."""

import pytest

from generator import mutants_of


def changes(text, operator):
    return [mutant.change for mutant in mutants_of("a.cpp", text) if mutant.operator == operator]


def inside(statement):
    return f"void f()\n{{\n    {statement}\n}}\n"


@pytest.mark.parametrize(
    ("statement", "operator", "expected"),
    [
        ("x = a < b;", "comparison", ["< -> <=", "< -> >="]),
        ("x = a == b;", "comparison", ["== -> !="]),
        ("std::vector<int> x;", "comparison", []),
        ("x = a && b;", "operator", ["&& -> ||"]),
        ("x = a + b;", "operator", ["+ -> -"]),
        ('x = a + "b";', "operator", []),
        ("g(&a, *b);", "operator", []),
        ("for (int i = 0; i < 3; ++i) { }", "operator", ["++ -> --"]),
        ("if (a) { }", "condition", ["a -> !(a)", "a -> false", "a -> true"]),
        ("if (!a) { }", "condition", ["! -> ", "!a -> false", "!a -> true"]),
        ("if (a == b) { }", "condition", ["a == b -> false", "a == b -> true"]),
        ("if (auto a = g()) { }", "condition", []),
        ("if (auto a = g(); a) { }", "condition", ["a -> !(a)", "a -> false", "a -> true"]),
        ("while (a) { }", "condition", ["a -> !(a)", "a -> false"]),
        ("for (int i = 0; i < 3; ++i) { }", "condition", ["i < 3 -> false"]),
        ("x = a(1) ? b : c;", "condition", ["a(1) -> !(a(1))"]),
        ("x = true;", "boolean", ["true -> false"]),
        ("row->addWidget(a, Qt::AlignCenter);", "word", ["AlignCenter -> AlignLeft"]),
        ('label->setText(tr("a"));', "word", ["tr -> QString"]),
        ("x = 7;", "number", ["7 -> 6", "7 -> 8"]),
        ("x = 0;", "number", ["0 -> 1"]),
        ("x = 0x0Fu;", "number", ["0x0Fu -> 0x0Eu", "0x0Fu -> 0x10u"]),
        ("x = 0xfff7f0ff;", "number", ["0xfff7f0ff -> 0xff080f00"]),
        ("x = 0640;", "number", ["0640 -> 0637", "0640 -> 0641"]),
        ("x = 'a';", "number", ["'a' -> 'x'"]),
        (r'x = "a\n";', "string", [r'"a\n" -> ""', r'"a\n" -> "a"']),
        ('x = "a";', "string", ['"a" -> ""', '"a" -> "x"']),
        ('x = "";', "string", ['"" -> "x"']),
        ('x = R"(a)b)";', "string", ['R"(a)b)" -> R"()"', 'R"(a)b)" -> R"(a))"']),
        ("g(1);", "statement deleted", ["g(1); -> ;"]),
        ("const int a = g(); std::string b(a); QVector<int> *c = d;", "statement deleted", []),
        ("h([] { g(1); });", "statement deleted", ["h([] { g(1); }); -> ;", "g(1); -> ;"]),
        ("for (int a : list) { g(a); }", "statement deleted", ["for (int a : list) { g(a); } -> ;", "g(a); -> ;"]),
        ("switch (a) { case B::C: g(); break; }", "statement deleted", ["g(); -> ;"]),
        ("switch (a) { case B::C: g(); break; }", "jump removed", ["break; -> ;"]),
        ("if (a) { return 1; } return 2;", "jump removed", ["return 1; -> ;"]),
        ("g(a, b);", "arguments swapped", ["a, b -> b, a"]),
        ("g(a, a); g([] { }, b); if (a, b) { }", "arguments swapped", []),
        ("connect(a, SIGNAL(b(c)), e, SLOT(f(c)));", "arguments swapped", []),
    ],
)
def test_statement(statement, operator, expected):
    assert changes(inside(statement), operator) == expected


TABLE = """constexpr Row Rows[] = {
    {Bus::Usb, "a", 1},
    {Bus::Usb, "b", 2},
    {Bus::FireWire, "c", 3},
};
"""


def test_rows_of_a_table_are_swapped():
    assert changes(TABLE, "rows swapped") == [
        '{Bus::Usb, "a", 1}, {Bus::Usb, "b", 2} -> {Bus::Usb, "b", 2}, {Bus::Usb, "a", 1}',
        '{Bus::Usb, "b", 2}, {Bus::FireWire, "c", 3} -> {Bus::FireWire, "c", 3}, {Bus::Usb, "b", 2}',
    ]


def test_enumerators_of_a_table_are_exchanged():
    assert changes(TABLE, "enumerator") == ["Bus::Usb -> Bus::FireWire"] * 2 + ["Bus::FireWire -> Bus::Usb"]


@pytest.mark.parametrize(
    "text",
    [
        '#include "a.h"\n#define A \\\n    1\n',
        "// if (a == 1) return;\n/* x = 2; */\n",
        "class A : public B\n{\npublic:\n    A(int a, int b);\n    bool operator<(const A &a) const;\n};\n",
        "enum class A { B, C };\nnamespace a::b {\nstruct C;\n}\n",
    ],
)
def test_no_mutants(text):
    assert mutants_of("a.h", text) == []


def test_header_constants_are_changed():
    header = "class A\n{\n    bool b = false;\n    int c = 3;\n    void f(int d, int e);\n};\n"
    assert [mutant.change for mutant in mutants_of("a.h", header)] == ["false -> true", "3 -> 2", "3 -> 4"]


def test_a_mutant_differs_in_what_it_says():
    text = inside("if (a == b) { g(1); }")
    mutant = next(mutant for mutant in mutants_of("a.cpp", text) if mutant.operator == "comparison")
    assert mutant.apply(text) == text.replace("==", "!=")
    assert (mutant.number, mutant.line) == (3, "if (a == b) { g(1); }")


def test_identities_survive_an_edit_elsewhere():
    text = inside("x = a == b && c == d;")
    before = [mutant.identity for mutant in mutants_of("a.cpp", text)]
    after = [mutant.identity for mutant in mutants_of("a.cpp", "// A new line.\n" + text + inside("y = 1;"))]
    assert len(set(before)) == len(before)
    assert set(before) < set(after)

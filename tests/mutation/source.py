# SPDX-License-Identifier: MIT
"""A C++ source as the generator sees it: its tokens, the brackets round each, and what a brace encloses."""

import dataclasses
import re

TOKEN = re.compile(
    r"""
      (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
    | (?P<string>(?:u8|[uUL])?(?:R"(?P<mark>[^()\\\s"]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"))
    | (?P<char>'(?:\\.|[^'\\\n])+')
    | (?P<number>\d(?:'?[\w.])*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<space>\s+)
    | (?P<operator><<=|>>=|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)
OPENING = {"(": ")", "[": "]", "{": "}"}


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    outer: int | None = None  # index of the innermost bracket round it
    partner: int | None = None  # of a bracket: index of the other one
    brace: str = ""  # of an opening brace: what it encloses (code, table, type, enum, namespace)


class Source:
    def __init__(self, text):
        self.text = text
        self.tokens = [
            Token(found.lastgroup, found.group(), found.start(), found.end())
            for found in TOKEN.finditer(text)
            if found.lastgroup not in ("comment", "directive", "space")
        ]
        self._pair_brackets()

    def _pair_brackets(self):
        open_brackets = []
        for index, token in enumerate(self.tokens):
            if token.text in OPENING.values() and token.kind == "operator" and open_brackets:
                token.partner = open_brackets.pop()
                self.tokens[token.partner].partner = index
            token.outer = open_brackets[-1] if open_brackets else None
            if token.text in OPENING and token.kind == "operator":
                if token.text == "{":
                    token.brace = self._enclosed(index)
                open_brackets.append(index)

    def _enclosed(self, index):
        before = self.word(index - 1)
        outer = self.tokens[index].outer
        outer_brace = self.tokens[outer].brace if outer is not None else "namespace"
        if before in (")", "]", "else", "do", "try", ";", "const", "noexcept", "override"):
            return "code"
        if before in ("{", "}"):
            return outer_brace
        head = self._head(index)
        for word, brace in (("enum", "enum"), ("class", "type"), ("struct", "type"), ("union", "type")):
            if word in head:
                return brace
        if "namespace" in head or (head[:1] == ["extern"] and len(head) == 2):
            return "namespace"
        return "code" if "->" in head and "=" not in head[head.index("->") :] else "table"

    def _head(self, index):
        """The words before a brace, back to the end of the statement before it."""
        words = []
        depth = self.tokens[index].outer
        while index > 0 and self.word(index - 1) not in (";", "{", "}"):
            index -= 1
            if self.tokens[index].outer == depth:
                words.insert(0, self.word(index))
        return words

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def range(self, first, last):
        """Where the text of the tokens from `first` to `last` starts and ends, both included."""
        return self.tokens[first].start, self.tokens[last].end

    def slice(self, first, last):
        return self.text[slice(*self.range(first, last))]

    def is_code(self, index):
        """Whether the token stands inside a function's body."""
        outer = self.tokens[index].outer
        while outer is not None:
            if self.tokens[outer].brace == "code":
                return True
            outer = self.tokens[outer].outer
        return False

    def is_binary(self, index):
        """Whether blanks stand round the operator, as they do round a binary one but not in a type or a template."""
        token = self.tokens[index]
        stands_free = self.text[token.start - 1].isspace() and self.text[token.end : token.end + 1].isspace()
        return stands_free and self.word(index - 1) not in ("operator", "template")

    def elements(self, opening):
        """First and last token of each element of a list in brackets."""
        found = []
        first = index = opening + 1
        closing = self.tokens[opening].partner
        while index <= closing:
            if index == closing or self.word(index) == ",":
                if index > first:
                    found.append((first, index - 1))
                first = index + 1
            index = self._after(index)
        return found

    def _after(self, index):
        """The token after this one, or after the brackets that it opens."""
        token = self.tokens[index]
        if token.partner is not None and token.partner > index:
            return token.partner + 1
        if token.text == "<" and not self.is_binary(index):
            return self.end_of_template(index) + 1
        return index + 1

    def end_of_template(self, index):
        depth = 0
        while True:
            depth += {"<": 1, ">": -1, ">>": -2}.get(self.word(index), 0)
            if depth <= 0:
                return index
            index += 1

    def starts_statement(self, index):
        token = self.tokens[index]
        if token.outer is None or self.tokens[token.outer].brace != "code":
            return False
        if token.kind != "name" and token.text not in ("*", "++", "--", "("):
            return False
        before = self.word(index - 1)
        return before in ("{", ";", "}", "else", "do") or (before == ":" and self._is_label(index - 1))

    def _is_label(self, colon):
        index = colon - 1
        while self.tokens[index].kind in ("name", "number", "char") or self.word(index) == "::":
            if self.word(index) in ("case", "default"):
                return True
            index -= 1
        return False

    def end_of_statement(self, index):
        """Its semicolon; none where the block ends without one."""
        outer = self.tokens[index].outer
        closing = self.tokens[outer].partner
        while index < closing and self.word(index) != ";":
            index = self._after(index)
        return index if index < closing else None

    def start_of_operand(self, question):
        """The first token of the condition before a question mark."""
        first = question
        outer = self.tokens[question].outer
        while self.tokens[first - 1].outer == outer:
            before = self.tokens[first - 1]
            if before.text in (",", "=", "return", ";", ":", "?", "<<", "+=") or before.brace:
                break
            first = before.partner if before.text in (")", "]") else first - 1
        return first

# SPDX-License-Identifier: MIT
"""The kinds of faults. Each function of FAULTS yields the faults of its kind that a source can have: where the
replaced text starts and ends, the name of the operator, and what takes its place."""

import re

COMPARISONS = {
    "==": ["!="],
    "!=": ["=="],
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
}
OPERATORS = {
    "&&": "||", "||": "&&", "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "++": "--", "--": "++",
}  # fmt: skip
WORDS = {
    "show": "hide", "hide": "show", "min": "max", "max": "min", "AlignHCenter": "AlignLeft", "AlignCenter": "AlignLeft",
    "KeepAspectRatio": "IgnoreAspectRatio", "SmoothTransformation": "FastTransformation", "StyleItalic": "StyleNormal",
    "tr": "QString",
}  # fmt: skip
BOOLEANS = {"true": "false", "false": "true"}
JUMPS = ("break", "continue", "return", "throw")
BRANCHES = ("if", "for", "while", "switch", "catch")
# What begins a statement that is not deleted: a declaration, or a branch, whose condition is changed instead.
NOT_DELETED = (
    "if", "while", "switch", "do", "case", "default", "else", "try", "catch", "using", "static_assert", "typedef",
    "const", "constexpr", "static", "auto", "template", "struct", "class", "enum",
)  # fmt: skip
UNLIKE_OTHERS = {"[", "SIGNAL", "SLOT", "this", "tr"}  # what begins an argument that no other can take the place of
CHARACTER = re.compile(r"\\(?:x[0-9A-Fa-f]+|[0-7]{1,3}|.)|.", re.DOTALL)


def changed_operators(source):
    for index, token in enumerate(source.tokens):
        if token.kind != "operator" or not source.is_code(index):
            continue
        if token.text in COMPARISONS and source.is_binary(index):
            for other in COMPARISONS[token.text]:
                yield token.start, token.end, "comparison", other
        elif token.text in OPERATORS and (source.is_binary(index) or token.text in ("++", "--")):
            if "string" not in (source.tokens[index - 1].kind, source.tokens[index + 1].kind):
                yield token.start, token.end, "operator", OPERATORS[token.text]
        elif token.text == "!":
            yield token.start, token.end, "condition", ""


def changed_words(source):
    for index, token in enumerate(source.tokens):
        if token.text in BOOLEANS:
            yield token.start, token.end, "boolean", BOOLEANS[token.text]
        elif token.text in WORDS and source.is_code(index) and (token.text != "tr" or source.word(index + 1) == "("):
            yield token.start, token.end, "word", WORDS[token.text]


def changed_constants(source):
    for token in source.tokens:
        if token.kind == "number":
            for other in other_numbers(token.text):
                yield token.start, token.end, "number", other
        elif token.kind == "char":
            yield token.start, token.end, "number", "'y'" if token.text == "'x'" else "'x'"
        elif token.kind == "string":
            for other in other_strings(token.text):
                yield token.start, token.end, "string", other


def other_numbers(text):
    digits, suffix = re.fullmatch(r"(0[xX][\dA-Fa-f']+|[\d.']+)(\w*)", text).groups()
    digits = digits.replace("'", "")
    if "." in digits:
        return [f"{float(digits) + 1}{suffix}"]
    if re.fullmatch(r"0[xX][fF]{2}[\dA-Fa-f]{6}", digits):
        return [f"0xff{int(digits, 16) ^ 0xFFFFFFFF:06x}{suffix}"]  # a colour: nobody sees one that is off by one
    if digits[:2] in ("0x", "0X"):
        form, value = f"0x{{:0{len(digits) - 2}X}}", int(digits, 16)
    elif len(digits) > 1 and digits[0] == "0":
        form, value = f"{{:0{len(digits)}o}}", int(digits, 8)
    else:
        form, value = "{}", int(digits)
    return [form.format(other) + suffix for other in (value + 1, value - 1) if other >= 0]


def other_strings(text):
    """The string without its characters, and without its last one."""
    raw = re.match(r'\w*R"([^(]*)\(', text)
    opening = raw[0] if raw else text[: text.index('"') + 1]
    closing = f'){raw[1]}"' if raw else '"'
    characters = CHARACTER.findall(text[len(opening) : -len(closing)])
    others = ["x"] if not characters else ["", "".join(characters[:-1]) or "x"]
    return [opening + other + closing for other in others]


def changed_conditions(source):
    for index, token in enumerate(source.tokens):
        if token.text == "?" and source.is_code(index):
            bounds = (source.start_of_operand(index), index - 1)
            others = ("!",)
        elif token.text in ("if", "while", "for") and source.is_code(index):
            bounds = condition_bounds(source, index)
            # Nothing that only makes a loop endless.
            others = {"if": ("!", "true", "false"), "while": ("!", "false"), "for": ("false",)}[token.text]
        else:
            continue
        if bounds is None:
            continue
        text = source.slice(*bounds)
        # A single comparison or negation is inverted by the other operators.
        is_inverted_there = text[0] == "!" or re.search(r" (==|!=|[<>]=?) ", text)
        for other in others:
            if other != "!":
                yield *source.range(*bounds), "condition", other
            elif not is_inverted_there or re.search(r"&&|\|\|", text):
                yield *source.range(*bounds), "condition", f"!({text})"


def condition_bounds(source, index):
    """First and last token of a branch's condition; none where it declares something or there is none."""
    opening = index + 2 if source.word(index + 1) == "constexpr" else index + 1
    closing = source.tokens[opening].partner
    inside = [inner for inner in range(opening + 1, closing) if source.tokens[inner].outer == opening]
    semicolons = [inner for inner in inside if source.word(inner) == ";"]
    if source.word(index) == "for":
        return (semicolons[0] + 1, semicolons[1] - 1) if semicolons and semicolons[1] > semicolons[0] + 1 else None
    first = semicolons[-1] + 1 if semicolons else opening + 1
    declares = any(source.word(inner) == "=" for inner in inside if inner >= first)
    return None if declares else (first, closing - 1)


def deleted_statements(source):
    for index, token in enumerate(source.tokens):
        if not source.starts_statement(index):
            continue
        if token.text == "for":
            end = end_of_range_for(source, index)
        elif token.text in NOT_DELETED or is_declaration(source, index):
            continue
        else:
            end = source.end_of_statement(index)
        if end is not None and not (token.text in JUMPS and ends_function(source, end)):
            operator = "jump removed" if token.text in JUMPS else "statement deleted"
            yield *source.range(index, end), operator, ";"


def end_of_range_for(source, index):
    closing = source.tokens[index + 1].partner
    inside = [inner for inner in range(index + 2, closing) if source.tokens[inner].outer == index + 1]
    is_range = any(source.word(inner) == ":" for inner in inside)
    return source.tokens[closing + 1].partner if is_range and source.word(closing + 1) == "{" else None


def ends_function(source, end):
    """Whether the statement is the last one of a function or a lambda, which has to return something."""
    opening = source.tokens[end + 1].partner
    if source.word(end + 1) != "}" or source.word(opening - 1) in ("else", "do", "try", ":"):
        return False
    head = source.tokens[opening - 1].partner
    return head is None or source.word(head - 1) not in BRANCHES


def is_declaration(source, index):
    """Whether a type and a name stand there: two names, with nothing between them but what belongs to a type."""
    if source.word(index) in JUMPS + ("delete", "emit"):
        return False
    index += 1
    while True:
        if source.word(index) == "::":
            index += 2
        elif source.word(index) == "<" and not source.is_binary(index):
            index = source.end_of_template(index) + 1
        elif source.word(index) in ("*", "&", "const"):
            index += 1
        else:
            return source.tokens[index].kind == "name"


def swapped_neighbours(source):
    """Neighbouring arguments of a call, neighbouring rows of a table, neighbouring elements of a list of one kind."""
    for index, token in enumerate(source.tokens):
        if token.text == "(" and source.is_code(index):
            before = source.tokens[index - 1]
            is_call = before.kind == "name" and before.text not in BRANCHES + ("return", "sizeof")
            operator = "arguments swapped" if is_call or before.text in (")", ">") else ""
        elif token.text == "{" and token.brace == "table":
            kinds = {row_kind(source, *element) for element in source.elements(index)}
            operator = "rows swapped" if len(kinds) == 1 and "" not in kinds else ""
        else:
            continue
        elements = source.elements(index) if operator else []
        for left, right in zip(elements, elements[1:]):
            if can_be_swapped(source, left, right):
                between = source.text[source.tokens[left[1]].end : source.tokens[right[0]].start]
                yield *source.range(left[0], right[1]), operator, source.slice(*right) + between + source.slice(*left)


def row_kind(source, first, last):
    if source.word(first) == "{":
        return "{"
    return source.tokens[first].kind if first == last else ""


def can_be_swapped(source, left, right):
    """Not what is the same, and not what plainly differs in type."""
    words = {source.word(first) for first, last in (left, right)}
    kinds = {source.tokens[first].kind for first, last in (left, right)}
    if source.slice(*left) == source.slice(*right) or (len(words) == 2 and words & UNLIKE_OTHERS):
        return False
    return len(kinds) == 1 or "name" in kinds


def exchanged_enumerators(source):
    """An enumerator in a table, replaced by the next one of its column that differs."""
    for index, token in enumerate(source.tokens):
        if token.text != "{" or token.brace != "table":
            continue
        rows = [source.elements(first) for first, last in source.elements(index) if source.word(first) == "{"]
        for number, row in enumerate(rows):
            for column, bounds in enumerate(row):
                enumerator = source.slice(*bounds)
                scope = re.fullmatch(r"(\w+::)\w+", enumerator)
                following = [other[column] for other in rows[number + 1 :] + rows[:number] if column < len(other)]
                others = [text for other in following if (text := source.slice(*other)) != enumerator]
                others = [text for text in others if scope and text.startswith(scope[1])]
                if others:
                    yield *source.range(*bounds), "enumerator", others[0]


FAULTS = (
    changed_operators,
    changed_words,
    changed_constants,
    changed_conditions,
    deleted_statements,
    swapped_neighbours,
    exchanged_enumerators,
)

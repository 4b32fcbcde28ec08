"""The places of a source file at which a mutant is made, and what it changes there.

Statements and conditions come from clang's syntax tree, operators and constants from its lexer, so
that comments, texts, directives and assertions of the compiler are left alone. The code is as
clang-format writes it: a binary operator has blanks on both sides, nothing else that looks like one
has.
"""

import re
from dataclasses import dataclass
from pathlib import Path

from clang.cindex import Cursor, CursorKind, Index, Token, TokenKind, TranslationUnit

BINARY = {
    "relation": {
        "==": ["!="], "!=": ["=="],
        "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    },
    "logic": {"&&": ["||"], "||": ["&&"]},
    "arithmetic": {
        "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
        "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="],
    },
    "bits": {
        "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
        "&=": ["|="], "|=": ["&="], "<<=": [">>="], ">>=": ["<<="],
    },
}
UNARY = {
    "arithmetic": {"++": "--", "--": "++", "-": ""},
    "negation": {"!": ""},
}
WORDS = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"}

# A negation or a single comparison, which the change of its operator inverts already.
INVERTED_BY_AN_OPERATOR = re.compile(rb"(!|(?=.* [!=]= ))((?!&&|\|\|).)*", re.DOTALL)

FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR,
    CursorKind.DESTRUCTOR, CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE,
}
JUMPS = {CursorKind.RETURN_STMT, CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT}


@dataclass(frozen=True)
class Site:
    """One mutant: the bytes `start` to `end` of the file become `new`."""

    file: str  # relative to the project
    function: str  # or the variable outside functions
    operator: str
    start: int
    end: int
    new: bytes
    line: int
    before: str  # the lines concerned, with single blanks
    after: str

    @property
    def key(self) -> tuple[str, str, str, str]:
        """What stays the same when the code around it moves."""
        return self.file, self.function, self.before, self.after


def _one_line(text: bytes) -> str:
    return " ".join(text.decode().split())


class _Finder:
    def __init__(self, file: str, source: bytes):
        self.file = file
        self.source = source
        self.sites: list[Site] = []
        self.regions: list[tuple[int, int, str]] = []  # code, and the function it belongs to
        self.excluded: list[tuple[int, int]] = []
        self.last_returns: set[tuple[int, int]] = set()

    def add(self, operator: str, function: str, start: int, end: int, new: bytes) -> None:
        first = self.source.rfind(b"\n", 0, start) + 1
        last = self.source.find(b"\n", end)
        last = len(self.source) if last < 0 else last
        after = self.source[first:start] + new + self.source[end:last]
        self.sites.append(Site(self.file, function, operator, start, end, new,
                               self.source.count(b"\n", 0, start) + 1,
                               _one_line(self.source[first:last]), _one_line(after)))

    # Statements and conditions.

    def visit(self, cursor: Cursor, function: str) -> None:
        kind = cursor.kind
        extent = cursor.extent
        if kind == CursorKind.STATIC_ASSERT:
            self.excluded.append((extent.start.offset, extent.end.offset))
            return
        if kind in FUNCTIONS and cursor.is_definition():
            function = cursor.spelling
            self.regions.append((extent.start.offset, extent.end.offset, function))
        elif kind in (CursorKind.VAR_DECL, CursorKind.FIELD_DECL) and not function:
            self.regions.append((extent.start.offset, extent.end.offset, cursor.spelling))
        children = list(cursor.get_children())
        if kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR):
            self.invert(next((child for child in children if child.kind.is_expression()), None),
                        function)
        elif kind == CursorKind.DO_STMT:
            self.invert(children[-1], function)
        elif kind == CursorKind.COMPOUND_STMT:
            self.drop_statements(children, function)
        for child in children:
            if kind in FUNCTIONS and child.kind == CursorKind.COMPOUND_STMT:
                self.note_last_return(list(child.get_children()))
            self.visit(child, function)

    def note_last_return(self, body: list[Cursor]) -> None:
        """The return at the end of a function can't be left out."""
        if body and body[-1].kind == CursorKind.RETURN_STMT:
            extent = body[-1].extent
            self.last_returns.add((extent.start.offset, extent.end.offset))

    def invert(self, condition: Cursor | None, function: str) -> None:
        if condition is None:
            return
        start, end = condition.extent.start.offset, condition.extent.end.offset
        if INVERTED_BY_AN_OPERATOR.fullmatch(self.source[start:end]):
            return
        self.add("condition inverted", function, start, end,
                 b"!(" + self.source[start:end] + b")")

    def drop_statements(self, statements: list[Cursor], function: str) -> None:
        for statement in statements:
            start, end = statement.extent.start.offset, statement.extent.end.offset
            if (statement.kind.is_expression() or statement.kind in JUMPS) and \
                    (start, end) not in self.last_returns:
                self.add("statement dropped", function, start, end, b"")

    # Operators and constants.

    def function_at(self, offset: int) -> str | None:
        """The innermost function or variable around a byte of code; nothing elsewhere."""
        if any(start <= offset < end for start, end in self.excluded):
            return None
        around = [region for region in self.regions if region[0] <= offset < region[1]]
        return min(around, key=lambda region: region[1] - region[0])[2] if around else None

    def visit_token(self, token: Token) -> None:
        start, end = token.extent.start.offset, token.extent.end.offset
        function = self.function_at(start)
        if function is None:
            return
        text = token.spelling
        if token.kind == TokenKind.PUNCTUATION:
            self.change_operator(text, function, start, end)
        elif token.kind == TokenKind.LITERAL:
            self.change_constant(text, function, start, end)
        elif text in WORDS:
            self.add("truth value", function, start, end, WORDS[text].encode())

    def change_operator(self, text: str, function: str, start: int, end: int) -> None:
        blank_before = self.source[start - 1:start].isspace()
        blank_behind = self.source[end:end + 1].isspace()
        if blank_before and blank_behind:
            for name, table in BINARY.items():
                for new in table.get(text, []):
                    self.add(name, function, start, end, new.encode())
        elif text in ("++", "--") or not blank_behind:
            for name, unary in UNARY.items():
                if text in unary:
                    self.add(name, function, start, end, unary[text].encode())

    def change_constant(self, text: str, function: str, start: int, end: int) -> None:
        number = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*)([uUlLzZ]*)", text)
        character = re.fullmatch(r"(L|u8|u|U)?'(.*)'", text, re.DOTALL)
        string = re.fullmatch(r"(L|u8|u|U)?\"(.*)\"", text, re.DOTALL)
        raw = re.fullmatch(r"((?:L|u8|u|U)?R\")([^(]*)\((.*)\)\2\"", text, re.DOTALL)
        if number:
            digits = number[1].replace("'", "")
            is_octal = len(digits) > 1 and digits.isdigit() and digits[0] == "0"
            value = int(digits, 8 if is_octal else 0)
            for other in (value + 1, value - 1):
                new = str(other) + number[2] if other >= 0 else f"({other})"
                self.add("number", function, start, end, new.encode())
        elif character:
            self.add("character", function, start, end,
                     ((character[1] or "") + ("'~'" if character[2] != "~" else "'^'")).encode())
        elif raw:
            self.add("text", function, start, end,
                     f"{raw[1]}{raw[2]}({'' if raw[3] else 'mutant'}){raw[2]}\"".encode())
        elif string:
            self.add("text", function, start, end,
                     f"{string[1] or ''}\"{'' if string[2] else 'mutant'}\"".encode())


def find_sites(root: Path, file: str, arguments: list[str]) -> list[Site]:
    """Every mutant of the file, in the order of its bytes. `arguments` are the compiler's."""
    path = root / file
    unit: TranslationUnit = Index.create().parse(str(path), args=arguments)
    errors = [str(line) for line in unit.diagnostics if line.severity >= 3]
    if errors:
        raise RuntimeError("\n".join(errors))
    finder = _Finder(file, path.read_bytes())
    for cursor in unit.cursor.get_children():
        if cursor.location.file and cursor.location.file.name == str(path):
            finder.visit(cursor, "")
    for token in unit.get_tokens(extent=unit.cursor.extent):
        finder.visit_token(token)
    return sorted(set(finder.sites), key=lambda site: (site.start, site.end, site.new))

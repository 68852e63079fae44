"""Finds places of a source for small faults, and writes sources that contain the faults."""

import dataclasses
import re

from clang.cindex import CursorKind, TranslationUnit, TypeKind

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*"}
CONNECTIVES = {"&&": "||", "||": "&&"}
OPPOSITES = {"std::min": "std::max", "std::max": "std::min"}
LITERALS = {
    CursorKind.INTEGER_LITERAL: re.compile(r"(0x[0-9A-Fa-f']+|[0-9][0-9']*)[uUlL]*$"),
    CursorKind.FLOATING_LITERAL: re.compile(r"[0-9.][0-9.eE+-]*[fF]?$"),
    CursorKind.CHARACTER_LITERAL: re.compile(r"u?'.{1,4}'$"),
}
ARITHMETIC_TYPES = {
    kind
    for kind in (
        TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG,
        TypeKind.SHORT, TypeKind.USHORT, TypeKind.UCHAR, TypeKind.SCHAR, TypeKind.CHAR_S, TypeKind.FLOAT,
        TypeKind.DOUBLE, TypeKind.POINTER,
    )
}
CONDITIONAL = {CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR}
BLOCK_OWNERS = {
    CursorKind.COMPOUND_STMT, CursorKind.IF_STMT, CursorKind.FOR_STMT, CursorKind.WHILE_STMT,
    CursorKind.CXX_FOR_RANGE_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT,
}
JUMPS = {CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT}
FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.FUNCTION_TEMPLATE,
    CursorKind.CONVERSION_FUNCTION,
}
MAX_LENGTH = 800  # characters that a fault may repeat


@dataclasses.dataclass
class Fault:
    """One small change. `pieces` are texts and (begin, end) ranges of the source; SWITCH stands for the check
    whether the fault is on. `constant` is the range of a constexpr that must become const."""

    path: str
    line: int
    begin: int
    end: int
    kind: str
    pieces: list
    old: str
    new: str
    is_in_constexpr: bool = False
    constant: tuple = None
    number: int = 0

    def switch(self):
        return f"::mutation::{'on' if self.is_in_constexpr else 'live'}({self.number})"

    def __str__(self):
        return f"{self.path}:{self.line}: {self.kind}: {self.old}  ->  {self.new}"


SWITCH = object()


def one_line(text):
    return " ".join(text.split())


class Finder:
    """Walks the syntax tree of one source and collects its faults."""

    def __init__(self, path, text):
        self.path = path
        self.text = text  # bytes, as the offsets of the syntax tree
        self.faults = []

    def find(self, unit, absolute):
        for cursor in unit.cursor.get_children():
            if cursor.location.file and cursor.location.file.name == absolute:
                self.visit(cursor, None, False, None)
        unique = {(fault.begin, fault.end, fault.kind, fault.new): fault for fault in self.faults}
        return sorted(unique.values(), key=lambda fault: (fault.begin, fault.end, fault.kind, fault.new))

    def source(self, begin, end):
        return self.text[begin:end].decode()

    def range_of(self, cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def add(self, cursor, kind, span, pieces, old, new, is_in_constexpr, constant):
        text = self.source(*span)
        if "//" in text or "#" in text or len(text) > MAX_LENGTH or not text:
            return
        self.faults.append(
            Fault(self.path, self.text[: span[0]].count(b"\n") + 1, *span, kind, pieces, one_line(old), one_line(new),
                  is_in_constexpr, constant))

    def visit(self, cursor, parent, is_in_constexpr, constant):
        kind = cursor.kind
        if kind == CursorKind.STATIC_ASSERT:
            return
        head = self.source(*self.range_of(cursor))[:200].split("(")[0]
        if kind in FUNCTIONS:
            is_in_constexpr = bool(re.search(r"\bconstexpr\b", head))
            constant = None
        elif kind == CursorKind.VAR_DECL and not is_in_constexpr:
            found = re.search(r"\bconstexpr\b", head.split("=")[0].split("{")[0])
            begin = cursor.extent.start.offset
            constant = (begin + found.start(), begin + found.end()) if found else constant
        state = (is_in_constexpr, constant)
        self.expression_faults(cursor, parent, state)
        self.statement_faults(cursor, state)
        for child in cursor.get_children():
            self.visit(child, cursor, *state)

    def expression_faults(self, cursor, parent, state):
        if cursor.kind == CursorKind.BINARY_OPERATOR:
            self.operator_faults(cursor, state)
        elif cursor.kind in LITERALS:
            self.literal_faults(cursor, state)
        elif cursor.kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            span = self.range_of(cursor)
            text = self.source(*span)
            if text in ("true", "false"):
                self.add(cursor, "constant", span, ["(", SWITCH, "!=", span, ")"], text,
                         "true" if text == "false" else "false", *state)
        elif cursor.kind == CursorKind.CALL_EXPR:
            self.argument_faults(cursor, state)
        if cursor.kind in CONDITIONAL or self.is_truth(cursor, parent):
            self.condition_faults(cursor, state)

    def is_truth(self, cursor, parent):
        return cursor.kind == CursorKind.RETURN_STMT and any(
            child.type.get_canonical().kind == TypeKind.BOOL for child in cursor.get_children())

    def operator_faults(self, cursor, state):
        children = list(cursor.get_children())
        if len(children) != 2:
            return
        left, right = (self.range_of(child) for child in children)
        operator = self.source(left[1], right[0]).strip()
        span = (left[0], right[1])
        if span != self.range_of(cursor):
            return

        def replaced(kind, other):
            self.add(cursor, kind, span,
                     ["(", SWITCH, "?((", left, ")", other, "(", right, ")):((", left, ")", operator, "(", right, ")))"],
                     self.source(*span), f"{self.source(*left)} {other} {self.source(*right)}", *state)

        if operator in COMPARISONS:
            replaced("comparison", COMPARISONS[operator])
        elif operator in ARITHMETIC:
            types = {child.type.get_canonical().kind for child in children}
            if types <= ARITHMETIC_TYPES and TypeKind.POINTER not in types:
                replaced("arithmetic", ARITHMETIC[operator])
        elif operator in CONNECTIVES:
            replaced("connective", CONNECTIVES[operator])
            for side in (left, right):
                text = self.source(*side)
                self.add(cursor, "negated condition", side, ["(", SWITCH, "!=static_cast<bool>(", side, "))"], text,
                         f"!({text})", *state)
                without = ["(", SWITCH, "||static_cast<bool>(", side, "))"] if operator == "&&" else [
                    "(!", SWITCH, "&&static_cast<bool>(", side, "))"]
                self.add(cursor, "removed check", side, without, self.source(*span),
                         self.source(*(left if side == right else right)), *state)

    def literal_faults(self, cursor, state):
        span = self.range_of(cursor)
        text = self.source(*span)
        if not LITERALS[cursor.kind].match(text):
            return
        for sign in "+-":
            if sign == "-" and text.strip("uUlL") == "0" and text != "0":
                continue  # an unsigned zero minus one is not a small change
            self.add(cursor, "constant", span,
                     ["static_cast<decltype(", span, ")>(", SWITCH, "?", span, sign, "1:", span, ")"], text,
                     f"{text} {sign} 1", *state)

    def argument_faults(self, cursor, state):
        arguments = [argument for argument in cursor.get_arguments() if argument is not None]
        begin, end = self.range_of(cursor)
        for first, second in zip(arguments, arguments[1:]):
            left, right = self.range_of(first), self.range_of(second)
            texts = self.source(*left), self.source(*right)
            types = [argument.type.get_canonical().spelling.replace("const ", "") for argument in (first, second)]
            if (texts[0] == texts[1] or types[0] != types[1] or left[1] > right[0]
                    or not texts[0] or not texts[1] or texts[0][0] == "{" or texts[1][0] == "{"
                    or self.source(left[1], right[0]).strip() != ","):
                continue
            self.add(cursor, "swapped arguments", (left[0], right[1]),
                     ["(", SWITCH, "?(", right, "):(", left, ")),(", SWITCH, "?(", left, "):(", right, "))"],
                     f"{texts[0]}, {texts[1]}", f"{texts[1]}, {texts[0]}", *state)
        text = self.source(begin, end)
        name = re.match(r"std::(min|max)\b(?=[<(])", text)
        if name and arguments:
            other = OPPOSITES[name.group(0)]
            rest = (begin + name.end(), end)
            self.add(cursor, "swapped bound", (begin, end), ["(", SWITCH, "?", other, rest, ":", name.group(0), rest, ")"],
                     text, other + self.source(*rest), *state)

    def condition_faults(self, cursor, state):
        children = list(cursor.get_children())
        if not children or not children[0].kind.is_expression():
            return
        span = self.range_of(children[0])
        text = self.source(*span)
        if text in ("true", "false"):
            return
        before = self.source(cursor.extent.start.offset, span[0])
        if cursor.kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT) and not re.fullmatch(r"(if|while)\s*\(\s*", before):
            return
        self.add(cursor, "negated condition", span, ["(", SWITCH, "!=static_cast<bool>(", span, "))"], text, f"!({text})",
                 *state)
        if cursor.kind == CursorKind.IF_STMT:
            self.add(cursor, "removed check", span, ["(!", SWITCH, "&&static_cast<bool>(", span, "))"],
                     f"if ({text})", "if (false)", *state)

    def statement_faults(self, cursor, state):
        if cursor.kind not in BLOCK_OWNERS:
            return
        for index, child in enumerate(cursor.get_children()):
            span = self.range_of(child)
            text = self.source(*span)
            is_macro = re.match(r"[A-Za-z_]\w*\(", text) and text.endswith(")") and not re.match(r"(if|for|while|switch)\b", text)
            if not (child.kind in JUMPS or child.kind.is_expression() or is_macro):
                continue
            rest = self.text[span[1]: span[1] + 40].decode(errors="replace")
            semicolon = re.match(r"\s*;", rest)
            before = self.text[:span[0]].decode(errors="replace").rstrip()
            # A condition or a part of the head of a loop is not a statement.
            if not semicolon or before[-1:] not in ("{", "}", ";", ")", ":") and not before.endswith("else"):
                continue
            if cursor.kind == CursorKind.FOR_STMT and self.source(span[1], self.range_of(cursor)[1]).strip() not in ("", ";"):
                continue
            if child.kind == CursorKind.CXX_THROW_EXPR:
                continue
            whole = (span[0], span[1] + semicolon.end())
            self.add(child, "dropped statement", whole, ["if(", SWITCH, "){}else ", whole], text, "", *state)


def parse(index, absolute, text, arguments, main=None):
    """The translation unit of `main` (or of the file itself) with `text` instead of the file's content."""
    return index.parse(main or absolute, arguments, unsaved_files=[(absolute, text.decode())],
                       options=TranslationUnit.PARSE_PRECOMPILED_PREAMBLE if main is None else 0)


def errors_of(unit):
    return [diagnostic for diagnostic in unit.diagnostics if diagnostic.severity >= 3]


def woven(text, faults):
    """The source with all faults, on the same lines. Faults may be nested, but must not overlap otherwise."""
    constants = {fault.constant for fault in faults if fault.constant}
    edits = [(fault.begin, -fault.end, fault) for fault in faults]
    edits += [(begin, -end, None) for begin, end in constants]
    edits.sort(key=lambda edit: edit[:2])

    def render(begin, end, edits, is_copy):
        out = []
        place = begin
        index = 0
        while index < len(edits):
            start, stop, fault = edits[index]
            stop = -stop
            inner = []
            index += 1
            while index < len(edits) and edits[index][0] < stop:
                inner.append(edits[index])
                index += 1
            out.append(plain(text[place:start], is_copy))
            out.append(b"const" if fault is None else planted(fault, inner, is_copy))
            place = stop
        out.append(plain(text[place:end], is_copy))
        return b"".join(out)

    def plain(piece, is_copy):
        return piece.replace(b"\n", b" ") if is_copy else piece

    def planted(fault, inner, is_copy):
        out = []
        ranges = [piece for piece in fault.pieces if isinstance(piece, tuple)]
        # Only one of the copies keeps its line breaks, so that line numbers do not change.
        last = {piece: place for place, piece in enumerate(fault.pieces) if isinstance(piece, tuple)}
        for place, piece in enumerate(fault.pieces):
            if piece is SWITCH:
                out.append(fault.switch().encode())
            elif isinstance(piece, str):
                out.append(piece.encode())
            else:
                inside = [edit for edit in inner if piece[0] <= edit[0] and -edit[1] <= piece[1]]
                out.append(render(*piece, inside, is_copy or last[piece] != place))
        missing = text[fault.begin:fault.end].count(b"\n") - sum(
            text[a:b].count(b"\n") for a, b in set(ranges))
        out.append(b"\n" * (0 if is_copy else missing))
        return b"".join(out)

    return render(0, len(text), edits, False)

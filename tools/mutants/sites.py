"""Finds the changes that can be made in a source, by a walk over its syntax tree."""

import re
from dataclasses import dataclass

from clang.cindex import CursorKind as K
from clang.cindex import TypeKind

SWAPS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-", "-": "+",
    "*": "/", "/": "*", "&": "|", "|": "&", "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+=", "&=": "|=", "|=": "&=",
    "++": "--", "--": "++",
}
OVERLOADED = {"==", "!=", "<", "<=", ">", ">="}  # of those that classes define, the ones with a counterpart

FUNCTIONS = {K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.CONVERSION_FUNCTION, K.FUNCTION_TEMPLATE}
VARIABLES = {K.VAR_DECL, K.FIELD_DECL}
# Where an expression must be a constant, so that nothing can be chosen at run time.
CONSTANT = {K.ENUM_CONSTANT_DECL, K.STATIC_ASSERT, K.TEMPLATE_NON_TYPE_PARAMETER, K.DECL_REF_EXPR, K.MEMBER_REF_EXPR,
            K.TYPE_REF, K.TEMPLATE_REF, K.ALIGNED_ATTR}
BODIES = {K.IF_STMT, K.WHILE_STMT, K.FOR_STMT, K.CXX_FOR_RANGE_STMT, K.DO_STMT, K.CASE_STMT, K.DEFAULT_STMT}
JUMPS = {K.BREAK_STMT, K.CONTINUE_STMT}


@dataclass
class Mutant:
    """One change of a part of a file: the text to put before and after the part. Its number switches it on."""
    file: str
    start: int
    end: int
    before: str  # %s stands for the switch
    after: str
    function: str
    was: str
    now: str
    constexpr: bool
    line: int = 0
    ordinal: int = 1
    number: int = 0

    @property
    def key(self):
        again = f" ({self.ordinal})" if self.ordinal > 1 else ""
        where = f"{self.function}: " if self.function else ""
        return f"{self.file}: {where}{self.was} => {self.now}{again}"


def one_line(text):
    return re.sub(r"\s+", " ", re.sub(r"//[^\n]*", " ", text)).strip()


def offsets(cursor):
    return cursor.extent.start.offset, cursor.extent.end.offset


def qualified(cursor):
    names = []
    while cursor is not None and cursor.kind not in (K.TRANSLATION_UNIT, K.NAMESPACE):
        if cursor.spelling and cursor.kind != K.LINKAGE_SPEC:
            names.append(cursor.spelling)
        cursor = cursor.semantic_parent
    return "::".join(reversed(names))


def bare(cursor):
    """Returns the expression without its parentheses and conversions."""
    while cursor.kind in (K.UNEXPOSED_EXPR, K.PAREN_EXPR):
        inner = list(cursor.get_children())
        if len(inner) != 1 or not inner[0].kind.is_expression():
            break
        cursor = inner[0]
    return cursor


class Finder:
    """The changes of one file, in the order of its text."""

    def __init__(self, file, text):
        self.file = file
        self.text = text  # bytes, since offsets count them
        self.found = []
        self.known = set()

    def part(self, start, end):
        return self.text[start:end].decode()

    def add(self, start, end, before, after, changed, context):
        """Adds a change. changed: the text that replaces the part while the change is on."""
        head = self.text.rfind(b"\n", 0, start) + 1
        tail = self.text.find(b"\n", end)
        was = one_line(self.part(head, tail))
        now = one_line(self.part(head, start) + changed + self.part(end, tail))
        if (start, end, now) in self.known:
            return
        self.known.add((start, end, now))
        self.found.append(Mutant(self.file, start, end, before, after, context[0], was, now, context[1],
                                 line=self.text.count(b"\n", 0, start) + 1))

    def choose(self, start, end, changed, context):
        self.add(start, end, f"(%s ? ({changed}) : (", "))", changed, context)

    # The parts of the tree

    def visit(self, cursor, parent, context):
        kind = cursor.kind
        start, end = offsets(cursor)
        if kind in CONSTANT and kind not in (K.DECL_REF_EXPR, K.MEMBER_REF_EXPR):
            return
        if kind in FUNCTIONS or kind in VARIABLES:
            head = self.part(start, cursor.location.offset)
            fixed = re.search(r"\b(constexpr|consteval|constinit)\b", head)
            if kind in VARIABLES and fixed:
                return
            local = context[0] and kind in VARIABLES and parent.kind == K.DECL_STMT
            context = (context[0] if local else qualified(cursor),
                       bool(fixed) or context[1] or kind == K.FIELD_DECL)
        children = list(cursor.get_children())
        if kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.CALL_EXPR):
            self.operator(cursor, children, context)
        elif kind == K.UNARY_OPERATOR:
            self.unary(cursor, children, parent, context)
        elif kind == K.INTEGER_LITERAL:
            self.integer(cursor, parent, context)
        elif kind == K.CXX_BOOL_LITERAL_EXPR:
            text = self.part(start, end)
            if text in ("true", "false"):
                self.choose(start, end, "false" if text == "true" else "true", context)
        elif kind == K.CONDITIONAL_OPERATOR and children:
            self.negate(children[0], context)
        elif kind == K.RETURN_STMT and children and children[0].type.kind == TypeKind.BOOL:
            self.negate(children[0], context)
        elif kind in (K.IF_STMT, K.WHILE_STMT, K.FOR_STMT, K.DO_STMT):
            self.condition(cursor, children, context)
        self.statements(cursor, children, context)
        if kind == K.CASE_STMT:
            children = children[1:]
        elif kind in VARIABLES:  # what stands in front of the name belongs to the type
            children = [child for child in children if offsets(child)[0] >= cursor.location.offset]
        for child in children:
            self.visit(child, cursor, context)

    def operator(self, cursor, children, context):
        start, end = offsets(cursor)
        if cursor.kind == K.CALL_EXPR:
            if len(children) != 3 or not cursor.spelling.startswith("operator"):
                return
            left, right = children[0], children[2]
        elif len(children) == 2:
            left, right = children
        else:
            return
        after_left, before_right = left.extent.end.offset, right.extent.start.offset
        sign = self.part(after_left, before_right).strip()
        if sign not in SWAPS or (cursor.kind == K.CALL_EXPR and sign not in OVERLOADED):
            return
        changed = self.part(start, after_left) + f" {SWAPS[sign]} " + self.part(before_right, end)
        self.choose(start, end, changed, context)

    def unary(self, cursor, children, parent, context):
        start, end = offsets(cursor)
        if len(children) != 1:
            return
        inner = self.part(*offsets(children[0]))
        sign = self.part(start, end).replace(inner, "", 1).strip()
        if sign == "!":
            self.choose(start, end, f"static_cast<bool>({inner})", context)
        elif sign in ("++", "--") and parent.kind != K.FOR_STMT:
            self.choose(start, end, self.part(start, end).replace(sign, SWAPS[sign]), context)

    def integer(self, cursor, parent, context):
        start, end = offsets(cursor)
        text = self.part(start, end)
        if parent.kind in CONSTANT or not re.fullmatch(r"[0-9][0-9a-fA-FxXb']*[uUlLzZ]*", text):
            return
        before = self.text[:start].rstrip()[-1:]
        if parent.kind in VARIABLES and before in (b"[", b"<", b","):
            return  # the length of an array, an argument of a template
        digits = re.sub(r"[uUlLzZ']", "", text)
        value = int(digits, 8 if re.fullmatch("0[0-7]+", digits) else 0)
        changed = {0: "1", 1: "0"}.get(value, f"{text} + 1")
        target = parent.type.get_canonical()
        # A narrowing conversion between braces is an error, so cast to the type that is wanted there.
        kind = target.spelling if parent.kind == K.UNEXPOSED_EXPR and TypeKind.BOOL.value < target.kind.value \
            <= TypeKind.INT128.value else "decltype(" + text + ")"
        self.add(start, end, f"static_cast<{kind}>(%s ? ({changed}) : (", "))", changed, context)

    def condition(self, cursor, children, context):
        if cursor.kind == K.FOR_STMT:
            # In for (init; condition; step) each part may be missing: the first boolean expression is the condition.
            inside = [child for child in children[:-1] if child.kind.is_expression()
                      and child.type.kind == TypeKind.BOOL]
            if inside:
                self.never(inside[0], context)
            return
        place = next((i for i, child in enumerate(children) if child.kind.is_expression()), None)
        if place is None or re.match(r"if\s+constexpr\b", self.part(*offsets(cursor))):
            return
        condition = children[place]
        variable = children[place - 1] if place and children[place - 1].kind == K.VAR_DECL else None
        if variable is not None:
            if cursor.kind == K.IF_STMT:
                start, end = offsets(variable)
                name = variable.spelling
                self.add(start, end, "", f"; %s != static_cast<bool>({name})",
                         f"{self.part(start, end)}; !{name}", context)
        elif cursor.kind == K.IF_STMT:
            self.negate(condition, context)
        else:
            self.never(condition, context)

    def negate(self, cursor, context):
        inner = bare(cursor)
        start, end = offsets(cursor)
        if inner.kind in (K.CXX_BOOL_LITERAL_EXPR, K.INTEGER_LITERAL):
            return
        text = self.part(start, end)
        if inner.kind == K.UNARY_OPERATOR and self.part(*offsets(inner)).startswith("!"):
            return  # changed as an operator
        if inner.kind in (K.BINARY_OPERATOR, K.CALL_EXPR) and re.search(r"[^!=<>](==|!=)[^=]", text):
            children = list(inner.get_children())
            if len(children) > 1 and self.part(children[0].extent.end.offset,
                                               children[-1].extent.start.offset).strip() in ("==", "!="):
                return  # likewise
        self.add(start, end, "(%s != static_cast<bool>(", "))", f"!({text})", context)

    def never(self, cursor, context):
        start, end = offsets(cursor)
        if bare(cursor).kind != K.CXX_BOOL_LITERAL_EXPR:
            self.add(start, end, "(!%s && static_cast<bool>(", "))", "false", context)

    def statements(self, cursor, children, context):
        if cursor.kind == K.COMPOUND_STMT:
            bodies = children
        elif cursor.kind in BODIES:
            first = next((i for i, child in enumerate(children) if child.kind.is_expression()), -1)
            bodies = children[first + 1:] if cursor.kind == K.IF_STMT else children[-1:]
        else:
            return
        for body in bodies:
            start, end = offsets(body)
            semicolon = self.text.find(b";", end - 1)
            if semicolon < 0 or self.text[end:semicolon].strip():
                continue
            is_jump = body.kind in JUMPS
            if body.kind == K.RETURN_STMT:
                inner = list(body.get_children())
                is_jump = not inner or inner[0].type.kind == TypeKind.VOID
            if is_jump or body.kind.is_expression():
                self.add(start, semicolon + 1, "{ if (!%s) ", " }", "{}", context)


def find(unit, texts, finders):
    """Adds the changes in a parsed unit to `finders`. texts: the bytes of the files that may be changed, by path."""
    for cursor in unit.cursor.get_children():
        file = cursor.location.file and cursor.location.file.name
        if file in texts:
            finder = finders.setdefault(file, Finder(texts[file][0], texts[file][1]))
            finder.visit(cursor, unit.cursor, ("", False))

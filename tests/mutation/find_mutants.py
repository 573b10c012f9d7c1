"""Finds the changes that scripts/mutate tries: each is one operator, constant, condition or statement of one file.

The places are nodes of the compiler's syntax tree, so that nothing inside a comment, a directive, a static_assert or a
macro is taken for code. What is changed is text between two offsets of the file.
"""
import dataclasses
import re

from clang.cindex import Config, CursorKind as Kind, Index, TranslationUnitLoadError

Config.set_library_file("libclang-14.so.1")

BINARY = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("*",),
    "&&": ("||",), "||": ("&&",), "&": ("|",), "|": ("&",), "^": ("|",), "<<": (">>",), ">>": ("<<",),
    "+=": ("-=",), "-=": ("+=",), "*=": ("/=",), "/=": ("*=",), "%=": ("*=",), "&=": ("|=",), "|=": ("&=",),
    "^=": ("|=",), "<<=": (">>=",), ">>=": ("<<=",),
}
UNARY = {"!": "", "-": "", "~": "", "++": "--", "--": "++"}
FUNCTIONS = (Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.FUNCTION_TEMPLATE,
             Kind.CONVERSION_FUNCTION)
CLASSES = (Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE)
BODIES = (Kind.COMPOUND_STMT, Kind.IF_STMT, Kind.FOR_STMT, Kind.WHILE_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.CASE_STMT,
          Kind.DEFAULT_STMT)
DECLARATIONS = (Kind.VAR_DECL, Kind.DECL_STMT)
COMMENT = re.compile(rb"//[^\n]*|/\*.*?\*/", re.S)
NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|\d[\d']*)([uUlL]*)$")
STRING_UNIT = re.compile(r"\\x[0-9a-fA-F]+|\\[0-7]{1,3}|\\.|[^\\]", re.S)
TABLE = 8  # from this many elements on, an element of a list is changed in one way only


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    begin: int  # offsets in bytes
    end: int
    line: int
    column: int
    kind: str
    old: str
    new: str
    place: str  # the function it is in
    text: str  # its line
    number: int = 1  # which of the same changes of the same line text in the same function

    @property
    def name(self):
        return f'{self.file}:{self.line}:{self.column} {self.kind} "{shown(self.old)}" -> "{shown(self.new)}"'

    @property
    def key(self):
        """Names it whatever its line number is."""
        ordinal = f" #{self.number}" if self.number > 1 else ""
        change = f'{self.kind} "{shown(self.old)}" -> "{shown(self.new)}"{ordinal}'
        return f"{self.file} | {self.place} | {self.text} | {change}"


def shown(text):
    return " ".join(text.split())


class Finder:
    def __init__(self, name, path, arguments):
        self.name, self.path = name, str(path)
        self.bytes = path.read_bytes()
        self.found = {}
        unit = Index.create().parse(self.path, args=arguments)
        wrong = [message for message in unit.diagnostics if message.severity >= 3]
        if wrong:
            raise TranslationUnitLoadError(f"{self.name}: {wrong[0]}")
        for child in unit.cursor.get_children():
            if child.location.file and child.location.file.name == self.path:
                self.walk(child, None, "")

    # --- the tree

    def walk(self, node, parent, place, in_table=False):
        if node.kind == Kind.STATIC_ASSERT:
            return
        if node.kind in FUNCTIONS or node.kind in CLASSES:
            place = f"{place}::{node.spelling}" if place else self.qualified(node)
        children = list(node.get_children())
        if node.kind in BODIES:
            self.statements(node, children, place)
        self.node(node, children, place, in_table)
        in_table = in_table or (node.kind == Kind.INIT_LIST_EXPR and len(children) >= TABLE)
        for child in children:
            self.walk(child, node, place, in_table)

    @staticmethod
    def qualified(node):
        owner = node.semantic_parent
        return f"{owner.spelling}::{node.spelling}" if owner is not None and owner.kind in CLASSES else node.spelling

    def node(self, node, children, place, in_table):
        kind = node.kind
        if kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR) and len(children) == 2:
            self.operator_between(children[0].extent.end.offset, children[1].extent.start.offset, place)
        elif kind == Kind.CALL_EXPR and node.spelling.startswith("operator") and len(children) == 3:
            self.operator_between(children[1].extent.start.offset, children[1].extent.end.offset, place)
        elif kind == Kind.UNARY_OPERATOR and children:
            self.unary(node, children[0], place)
        elif kind == Kind.CONDITIONAL_OPERATOR and children:
            self.condition(children[0].extent.start.offset, children[0].extent.end.offset, ("true", "false"), place)
        elif kind == Kind.IF_STMT:
            self.if_condition(node, children, place)
        elif kind == Kind.WHILE_STMT and children and children[0].kind not in DECLARATIONS:
            self.condition(children[0].extent.start.offset, children[0].extent.end.offset, ("false",), place)
        elif kind == Kind.DO_STMT and len(children) == 2:
            self.condition(children[1].extent.start.offset, children[1].extent.end.offset, ("false",), place)
        elif kind == Kind.FOR_STMT:
            self.for_condition(node, place)
        elif kind in (Kind.INTEGER_LITERAL, Kind.CHARACTER_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR, Kind.STRING_LITERAL):
            self.literal(node, place, in_table)

    # --- the changes

    def operator_between(self, begin, end, place):
        """The operator is what stands between its operands apart from spaces, comments and brackets."""
        between = COMMENT.sub(lambda match: b" " * len(match.group()), self.bytes[begin:end])
        operator = between.strip(b" \t\r\n()").decode()
        if operator not in BINARY:
            return
        start = begin + between.index(operator.encode())
        for new in BINARY[operator]:
            self.add(start, start + len(operator), "operator", new, place)

    def unary(self, node, operand, place):
        start, end = node.extent.start.offset, node.extent.end.offset
        prefix = self.bytes[start:operand.extent.start.offset].decode().strip(" (")
        postfix = self.bytes[operand.extent.end.offset:end].decode().strip(" )")
        if prefix in UNARY:
            self.add(start, start + len(prefix), "operator", UNARY[prefix], place)
        elif postfix in ("++", "--"):
            self.add(end - 2, end, "operator", UNARY[postfix], place)

    def condition(self, begin, end, values, place):
        for value in values:
            self.add(begin, end, "condition", value, place)

    def if_condition(self, node, children, place):
        text = self.bytes[node.extent.start.offset:children[-1].extent.start.offset] if children else b""
        if re.match(rb"if\s+constexpr", text):
            return
        while children and children[0].kind == Kind.DECL_STMT:
            children = children[1:]
        if children and children[0].kind not in DECLARATIONS:
            self.condition(children[0].extent.start.offset, children[0].extent.end.offset, ("true", "false"), place)

    def for_condition(self, node, place):
        """Children of a for statement do not say which of its parts they are: its text does."""
        begin = node.extent.start.offset
        text = self.bytes[begin:node.extent.end.offset]
        depth, parts, index = 0, [], text.index(b"(")
        for at in range(index, len(text)):
            byte = text[at:at + 1]
            depth += (byte in b"([{") - (byte in b")]}")
            if (byte == b";" and depth == 1) or depth == 0:
                parts.append((index + 1, at))
                index = at
            if depth == 0:
                break
        if len(parts) == 3:
            start, end = parts[1]
            part = text[start:end]
            if part.strip():
                start += len(part) - len(part.lstrip())
                self.condition(begin + start, begin + start + len(part.strip()), ("false",), place)

    def statements(self, node, children, place):
        """A statement that calls or assigns is left out."""
        own = children if node.kind == Kind.COMPOUND_STMT else children[1:]
        for child in own:
            inner = child
            while inner.kind == Kind.UNEXPOSED_EXPR and len(list(inner.get_children())) == 1:
                inner = next(inner.get_children())
            begin, end = child.extent.start.offset, child.extent.end.offset
            is_assignment = inner.kind == Kind.BINARY_OPERATOR and self.is_assignment(inner)
            if inner.kind not in (Kind.CALL_EXPR, Kind.CXX_DELETE_EXPR, Kind.CSTYLE_CAST_EXPR) and not is_assignment:
                continue
            # Only what ends as a statement: a condition or the step of a for statement does not.
            if re.match(rb"\s*;", self.bytes[end:]) and re.search(rb"[;{})]\s*$|\belse\s*$|:\s*$|\n\s*$",
                                                                  self.bytes[:begin]):
                self.add(begin, end, "statement", "", place)

    def is_assignment(self, node):
        left, right = list(node.get_children())[:2]
        return self.bytes[left.extent.end.offset:right.extent.start.offset].strip(b" \n()") == b"="

    def literal(self, node, place, in_table):
        begin, end = node.extent.start.offset, node.extent.end.offset
        text = self.bytes[begin:end].decode(errors="replace")
        changes = []
        if node.kind == Kind.INTEGER_LITERAL and NUMBER.match(text):
            changes = numbers(text)
        elif node.kind == Kind.CHARACTER_LITERAL and text.startswith("'"):
            changes = characters(text)
        elif node.kind == Kind.CXX_BOOL_LITERAL_EXPR and text in ("true", "false"):
            changes = ["false" if text == "true" else "true"]
        elif node.kind == Kind.STRING_LITERAL and re.match(r'"(\\.|[^"\\])*"$', text):
            changes = ['"' + "".join(STRING_UNIT.findall(text[1:-1])[:-1]) + '"' if text != '""' else '"x"']
        for new in changes[:1] if in_table else changes:
            self.add(begin, end, "constant", new, place)

    def add(self, begin, end, kind, new, place):
        if begin >= end:
            return
        old = self.bytes[begin:end].decode()
        line = self.bytes.count(b"\n", 0, begin) + 1
        start = self.bytes.rfind(b"\n", 0, begin) + 1
        stop = self.bytes.find(b"\n", begin)
        text = shown(self.bytes[start:stop if stop >= 0 else len(self.bytes)].decode())
        self.found.setdefault((begin, end, new), Mutant(self.name, begin, end, line, begin - start + 1, kind, old, new,
                                                        place or "-", text))

    def mutants(self):
        """In the order of the file, same ones numbered."""
        seen, result = {}, []
        for _, mutant in sorted(self.found.items()):
            seen[mutant.key] = seen.get(mutant.key, 0) + 1
            result.append(dataclasses.replace(mutant, number=seen[mutant.key]))
        return result


def numbers(text):
    """One more, one less, and zero, which are written in decimal."""
    digits, suffix = NUMBER.match(text).groups()
    plain = digits.replace("'", "")
    value = int(plain, 8) if re.match(r"0\d", plain) else int(plain, 0)
    return [f"{new}{suffix}" for new in dict.fromkeys((value + 1, value - 1, 0)) if new != value]


def characters(text):
    """The character's neighbours and the zero byte."""
    value = ord(eval(text)) if not re.match(r"'\\[0-7]", text) else int(text[2:-1], 8)  # a literal of both languages
    return [f"'\\{new:o}'" if new < 32 or new > 126 or chr(new) in "'\\" else f"'{chr(new)}'"
            for new in dict.fromkeys(((value + 1) % 256, (value - 1) % 256, 0)) if new != value]


def find(name, path, arguments):
    return Finder(name, path, arguments).mutants()

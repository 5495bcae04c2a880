"""Reads a blueprint file: assignments, and modules with their properties."""

import re
from typing import NamedTuple

TOKEN = re.compile(r'''(?P<skip>\s+|//[^\n]*|/\*.*?\*/)
    |(?P<string>"(?:[^"\\\n]|\\.)*")|(?P<raw>`[^`]*`)|(?P<number>-?\d+)
    |(?P<name>[A-Za-z_]\w*)|(?P<sign>\+=|[][{}(),:=+])''', re.DOTALL | re.VERBOSE)


class BlueprintError(Exception):
    """What the text has that a blueprint has not; begins with the number of the line."""


class Module(NamedTuple):
    type: str
    line: int
    properties: dict  # str, int, bool, list or dict by name


class Token(NamedTuple):
    kind: str
    text: str
    line: int


def tokens(text):
    position, line = 0, 1
    while position < len(text):
        match = TOKEN.match(text, position)
        if not match:
            raise BlueprintError(f'{line}: unexpected {text[position]!r}')
        if match.lastgroup != 'skip':
            yield Token(match.lastgroup, match.group(), line)
        line += match.group().count('\n')
        position = match.end()
    yield Token('end', 'the end of the file', line)


class Parser:
    def __init__(self, text):
        self.tokens = list(tokens(text))
        self.variables = {'true': True, 'false': False}

    def take(self, *expected):
        """The next token, whose text or kind is one of these."""
        token = self.tokens[0]
        if token.text not in expected and token.kind not in expected:
            raise BlueprintError(f'{token.line}: expected {" or ".join(expected)}, found {token.text}')
        return self.tokens.pop(0)

    def next_is(self, *texts):
        return self.tokens[0].text in texts

    def file(self):
        modules = []
        while self.tokens[0].kind != 'end':
            name = self.take('name')
            if self.next_is('{', '('):
                modules.append(Module(name.text, name.line, self.map(*('{}' if self.next_is('{') else '()'))))
            elif self.take('=', '+=').text == '=':
                self.variables[name.text] = self.value()
            else:
                self.variables[name.text] = self.sum(self.variable(name), self.value(), name)
        return modules

    def map(self, opening, closing):
        properties = {}
        self.take(opening)
        while not self.next_is(closing):
            name = self.take('name')
            if name.text in properties:
                raise BlueprintError(f'{name.line}: {name.text} is given twice')
            self.take(':', '=')
            properties[name.text] = self.value()
            self.separator(closing)
        self.take(closing)
        return properties

    def list(self):
        items = []
        self.take('[')
        while not self.next_is(']'):
            items.append(self.value())
            self.separator(']')
        self.take(']')
        return items

    def separator(self, closing):
        if not self.next_is(closing):
            self.take(',', closing)

    def value(self):
        result = self.operand()
        while self.next_is('+'):
            sign = self.take('+')
            result = self.sum(result, self.operand(), sign)
        return result

    def operand(self):
        if self.next_is('{'):
            return self.map('{', '}')
        if self.next_is('['):
            return self.list()
        token = self.take('string', 'raw', 'number', 'name')
        if token.kind == 'name':
            return self.variable(token)
        if token.kind == 'number':
            return int(token.text)
        content = token.text[1:-1]
        return content if token.kind == 'raw' else re.sub(r'\\(.)', r'\1', content)

    def variable(self, token):
        if token.text not in self.variables:
            raise BlueprintError(f'{token.line}: {token.text} is not defined')
        return self.variables[token.text]

    @staticmethod
    def sum(left, right, token):
        if type(left) is not type(right) or isinstance(left, bool):
            raise BlueprintError(f'{token.line}: values of two kinds are added')
        return {**left, **right} if isinstance(left, dict) else left + right


def parse(text):
    """The modules in the order of the file; raises BlueprintError."""
    return Parser(text).file()

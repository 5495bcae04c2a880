"""Reads .aidl files: what the files of this project use. Everything else is refused with file, line and why."""

import re
from dataclasses import dataclass, field
from pathlib import Path

SCALARS = ('boolean', 'byte', 'int', 'long')
BUILT_IN = SCALARS + ('String',)
ANNOTATIONS = ('@VintfStability', '@Backing(type="int")')


class AidlError(Exception):
    def __init__(self, path, line, what):
        super().__init__(f'{path}:{line}: {what}')


@dataclass
class Type:
    name: str
    is_array: bool


@dataclass
class Member:
    """A field, an argument or an enumerator."""
    name: str
    line: int
    type: Type = None
    value: str = ''  # the default of a field, the value of an enumerator
    doc: str = ''


@dataclass
class Method:
    name: str
    line: int
    arguments: list
    doc: str = ''


@dataclass
class Declaration:
    path: Path
    package: str
    imports: list  # (name, line)
    kind: str = ''  # interface, parcelable or enum
    name: str = ''
    line: int = 0
    doc: str = ''
    is_oneway: bool = False
    members: list = field(default_factory=list)  # of an interface its methods

    @property
    def full_name(self):
        return f'{self.package}.{self.name}'

    def types(self):
        """Each (type, member) that the declaration mentions, in order."""
        if self.kind == 'interface':
            return [(each.type, each) for method in self.members for each in method.arguments]
        return [(each.type, each) for each in self.members if each.type]


@dataclass
class _Token:
    text: str
    line: int
    doc: str  # of the comment before it


_TOKEN = re.compile(
    r'(?P<doc>/\*\*.*?\*/)|(?P<blank>/\*.*?\*/|//[^\n]*|\s+)|'
    r'@\w+(\(type="\w+"\))?|[A-Za-z_][\w.]*|-?\d+|[\[\](){},;=]', re.DOTALL)


def _tokens(path):
    text, at, doc, found = path.read_text(encoding='utf-8'), 0, '', []
    while at < len(text):
        line = text.count('\n', 0, at) + 1
        match = _TOKEN.match(text, at)
        if not match:
            raise AidlError(path, line, f"'{text[at]}' is not supported here")
        if match['doc']:
            doc = ' '.join(re.sub(r'(?m)^\s*\*', '', match['doc'][3:-2]).split())
        elif not match['blank']:
            found.append(_Token(match[0], line, doc))
            doc = ''
        at = match.end()
    return found + [_Token('', text.count('\n') + 1, '')]


class _Parser:
    def __init__(self, path):
        self.path = path
        self.tokens = _tokens(path)

    def fail(self, what, line=None):
        raise AidlError(self.path, line or self.tokens[0].line, what)

    def take(self):
        return self.tokens.pop(0)

    def accept(self, text):
        return self.take() if self.tokens[0].text == text else None

    def expect(self, text):
        return self.accept(text) or self.fail(f"expected '{text}', found '{self.tokens[0].text or 'the end'}'")

    def word(self, what):
        if not re.match('[A-Za-z_]', self.tokens[0].text):
            self.fail(f"expected {what}, found '{self.tokens[0].text or 'the end'}'")
        return self.take()

    def name(self, what):
        token = self.word(what)
        if '.' in token.text:
            self.fail(f"'{token.text}' is no name of {what}", token.line)
        return token

    def annotations(self):
        found = []
        while self.tokens[0].text.startswith('@'):
            token = self.take()
            if token.text not in ANNOTATIONS:
                self.fail(f"'{token.text}' is not supported", token.line)
            found.append(token.text)
        return found

    def type(self):
        name = self.word('a type')
        is_array = bool(self.accept('['))
        if is_array:
            self.expect(']')
        return Type(name.text, is_array)

    def declaration(self):
        self.expect('package')
        declaration = Declaration(self.path, self.word('a package').text, [])
        self.expect(';')
        while self.accept('import'):
            token = self.word('an import')
            declaration.imports.append((token.text, token.line))
            self.expect(';')
        declaration.doc = self.tokens[0].doc
        annotations = self.annotations()
        declaration.is_oneway = bool(self.accept('oneway'))
        kind = self.word('a declaration')
        read_member = {'interface': self.method, 'parcelable': self.field, 'enum': self.enumerator}.get(kind.text)
        if not read_member or declaration.is_oneway and kind.text != 'interface':
            self.fail(f"'{kind.text}' is not supported: expected interface, parcelable or enum", kind.line)
        declaration.kind, declaration.line = kind.text, kind.line
        declaration.name = self.name('a declaration').text
        if (kind.text == 'enum') != (ANNOTATIONS[1] in annotations):
            self.fail(f'{ANNOTATIONS[1]} belongs to an enum, and every enum needs it', kind.line)
        self.expect('{')
        while not self.accept('}'):
            declaration.members.append(read_member())
        if self.tokens[0].text:
            self.fail(f"one declaration a file: '{self.tokens[0].text}' is one too many")
        return declaration

    def method(self):
        doc = self.tokens[0].doc
        result = self.type()
        if result != Type('void', False):
            self.fail(f"a method returns void, not '{result.name}': answers come to a callback")
        name = self.name('a method')
        method = Method(name.text, name.line, [], doc)
        self.expect('(')
        while not self.accept(')'):
            if method.arguments:
                self.expect(',')
            method.arguments.append(self.argument())
        self.expect(';')
        return method

    def argument(self):
        if not self.accept('in'):
            self.fail(f"an argument is 'in', not '{self.tokens[0].text}'")
        type = self.type()
        name = self.name('an argument')
        return Member(name.text, name.line, type)

    def field(self):
        doc = self.tokens[0].doc
        type = self.type()
        name = self.name('a field')
        value = self.word('an enumerator').text if self.accept('=') else ''
        self.expect(';')
        return Member(name.text, name.line, type, value, doc)

    def enumerator(self):
        doc = self.tokens[0].doc
        name = self.name('an enumerator')
        self.expect('=')
        value = self.take()
        if not re.fullmatch(r'-?\d+', value.text):
            self.fail(f"expected a decimal number, found '{value.text}'", value.line)
        if not self.accept(','):
            self.expect('}')
            self.tokens.insert(0, _Token('}', value.line, ''))
        return Member(name.text, name.line, value=value.text, doc=doc)


class _Checker:
    """What can be said only when all files are read."""

    def __init__(self, declarations):
        self.all = declarations
        self.by_name = {each.name: each for each in declarations}

    def check(self):
        for check in (self.check_name, self.check_package, self.check_members, self.check_cycle):
            for declaration in self.all:
                check(declaration)

    def check_name(self, it):
        expected = tuple(it.full_name.split('.'))
        if it.path.with_suffix('').parts[-len(expected):] != expected:
            raise AidlError(it.path, it.line, f"'{it.full_name}' belongs into {'/'.join(expected)}.aidl")
        # The build tells the files of an interface by its name.
        if bool(re.match('I[A-Z]', it.name)) != (it.kind == 'interface'):
            raise AidlError(it.path, it.line,
                            f"'{it.name}': an interface begins with I and a capital letter, and nothing else does")

    def check_package(self, it):
        if it.package != self.all[0].package:
            raise AidlError(it.path, it.line, f"one package at a time: '{self.all[0].full_name}' is of another one")
        full_names = {each.full_name for each in self.all}
        for name, line in it.imports:
            if name not in full_names:
                raise AidlError(it.path, line, f"'{name}' is not among the files")

    def check_members(self, it):
        for group in [it.members] + [each.arguments for each in it.members if isinstance(each, Method)]:
            names = set()
            for member in group:
                if member.name in names:
                    raise AidlError(it.path, member.line, f"'{member.name}' is declared twice")
                names.add(member.name)
        for type, member in it.types():
            self.check_type(it, type, member)

    def check_type(self, it, type, member):
        known = self.by_name.get(type.name)
        if not known and type.name not in BUILT_IN:
            raise AidlError(it.path, member.line, f"'{type.name}' is not a known type")
        if known and known.kind == 'interface' and (type.is_array or it.kind != 'interface'):
            raise AidlError(it.path, member.line,
                            f"'{type.name}': an interface can be an argument, but no field and no array")
        if member.value:
            values = [f'{type.name}.{each.name}' for each in known.members] if known and known.kind == 'enum' else []
            if type.is_array or member.value not in values:
                raise AidlError(it.path, member.line,
                                f"'{member.value}': a default is an enumerator of the field's own type")

    def check_cycle(self, it, users=()):
        if it.name in users:
            path = ' > '.join(users[users.index(it.name):] + (it.name,))
            raise AidlError(it.path, it.line, f"'{it.name}' needs itself: {path}")
        for name in sorted({type.name for type, _ in it.types()} & self.by_name.keys()):
            self.check_cycle(self.by_name[name], users + (it.name,))


def read_files(paths):
    """The declarations of the files, by path. Raises AidlError for the first thing that is wrong."""
    declarations = [_Parser(path).declaration() for path in sorted(paths)]
    _Checker(declarations).check()
    return declarations

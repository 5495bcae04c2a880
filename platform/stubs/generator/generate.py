#!/usr/bin/env python3
"""Writes the C++ classes of the interface from its .aidl files, in the shape that a device's AIDL compiler gives them,
and beside them a table of methods and fields and a sink for each interface, which use only public names."""

import argparse
import json
import string
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the source folder stays as it is
import aidl  # noqa: E402

SCALARS = {'boolean': ('bool', 'false'), 'byte': ('int8_t', '0'), 'int': ('int32_t', '0'), 'long': ('int64_t', '0')}
STATUS = '::ndk::ScopedAStatus'


def text(value):
    return json.dumps(value, ensure_ascii=False)


def comment(doc, indent=''):
    return f'{indent}// {doc}\n' if doc else ''


def each_after_comma(parts):
    return ''.join(', ' + part for part in parts)


class Writer:
    """Fills the templates with the declarations of one package."""

    def __init__(self, declarations, version, hash):
        self.all = declarations
        self.by_name = {each.name: each for each in declarations}
        folder = 'aidl/' + declarations[0].package.replace('.', '/')
        self.common = {'folder': folder, 'namespace': folder.replace('/', '::'), 'version': version, 'hash': hash}

    # How things are spelled in C++. `scope` stands before the names of the package.

    def is_a(self, kind, type):
        return type.name in self.by_name and self.by_name[type.name].kind == kind

    def is_scalar(self, type):
        return not type.is_array and (type.name in SCALARS or self.is_a('enum', type))

    def cpp(self, type, scope=''):
        if type.name in self.by_name:
            name = scope + type.name
        else:
            name = 'std::string' if type.name == 'String' else SCALARS[type.name][0]
        if type.is_array:
            return 'std::vector<uint8_t>' if type.name == 'byte' else f'std::vector<{name}>'
        return f'std::shared_ptr<{name}>' if self.is_a('interface', type) else name

    def field(self, it):
        value = it.value.replace('.', '::') or SCALARS.get(it.type.name, ('', '{}'))[1]
        return f'{self.cpp(it.type)} {it.name}' + (f' = {value};' if self.is_scalar(it.type) else ';')

    def parameter(self, it, scope=''):
        return self.cpp(it.type, scope) if self.is_scalar(it.type) else f'const {self.cpp(it.type, scope)}&'

    def signature(self, method, scope=''):
        return f'{method.name}(' + ', '.join(f'{self.parameter(each, scope)} in_{each.name}'
                                             for each in method.arguments) + ')'

    def includes(self, names):
        return ''.join(f'#include <{self.common["folder"]}/{name}.h>\n' for name in names)

    # What each kind of declaration puts into its templates.

    def enum(self, it):
        qualified = [f'::{self.common["namespace"]}::{it.name}::{each.name}' for each in it.members]
        return {
            'count': len(it.members),
            'enumerators': ''.join(f'{comment(each.doc, "    ")}    {each.name} = {each.value},\n'
                                   for each in it.members),
            'values': ''.join(f'    {each},\n' for each in qualified),
            'cases': ''.join(f'        case {it.name}::{each.name}:\n            return {text(each.name)};\n'
                             for each in it.members)}

    def parcelable(self, it):
        return {
            'fields': ''.join(f'{comment(each.doc, "    ")}    {self.field(each)}\n' for each in it.members),
            'names': each_after_comma(each.name for each in it.members),
            'added': ''.join(f'    _aidl_text.add({text(each.name)}, {each.name});\n' for each in it.members)}

    def interface(self, it):
        out, flags = ('nullptr', 'FLAG_ONEWAY') if it.is_oneway else ('out', '0')
        bp = 'Bp' + it.name[1:]
        values = {'bn': 'Bn' + it.name[1:], 'bp': bp, 'codes': '', 'methods': '', 'default_methods': '',
                  'proxy_methods': '', 'cases': '', 'calls': ''}
        for index, each in enumerate(it.members):
            types = ', '.join(self.parameter(argument) for argument in each.arguments)
            given = each_after_comma(f'in_{argument.name}' for argument in each.arguments)
            code = f'TRANSACTION_{each.name}'
            values['codes'] += f'    static constexpr uint32_t {code} = FIRST_CALL_TRANSACTION + {index};\n'
            values['methods'] += f'{comment(each.doc, "    ")}    virtual {STATUS} {self.signature(each)} = 0;\n'
            values['default_methods'] += f'''    {STATUS} {each.name}({types}) override {{
        return {STATUS}::fromStatus(STATUS_UNKNOWN_TRANSACTION);
    }}
'''
            values['proxy_methods'] += f'    {STATUS} {self.signature(each)} override;\n'
            values['cases'] += f'''        case {it.name}::{code}:
            return ::subsys_stubs::serve(*service, &{it.name}::{each.name}, in, {out});
'''
            values['calls'] += f'''{STATUS} {bp}::{self.signature(each)} {{
    return ::subsys_stubs::call(asBinder(), {code}, {flags}, &{it.name}::{each.name}{given});
}}

'''
        return values

    def record_traits(self, it):
        fields = ',\n'.join(f'        field({text(each.name)}, {text(each.doc)}, &R::{each.name})'
                            for each in it.members)
        return f'''template <>
struct RecordTraits<interface::{it.name}> {{
    using R = interface::{it.name};
    static constexpr const char* name = {text(it.name)};
    static constexpr std::tuple fields{{
{fields}}};
}};

'''

    def interface_traits(self, it):
        methods = ',\n'.join(
            f'        method(I::TRANSACTION_{each.name}, {text(each.name)}, {text(each.doc)}, &I::{each.name}'
            f'{each_after_comma(text(argument.name) for argument in each.arguments)})' for each in it.members)
        return f'''template <>
struct InterfaceTraits<interface::{it.name}> {{
    using I = interface::{it.name};
    static constexpr const char* name = {text(it.name)};
    static constexpr bool oneway = {str(it.is_oneway).lower()};
    static constexpr std::tuple methods{{
{methods}}};
}};

'''

    def sink(self, it):
        methods = ''
        for each in it.members:
            given = each_after_comma(f'in_{argument.name}' for argument in each.arguments)
            methods += f'''    {STATUS} {self.signature(each, 'interface::')} override {{
        return static_cast<Derived*>(this)->onCall(methodOf<I, I::TRANSACTION_{each.name}>(){given});
    }}
'''
        return f'''template <class Derived>
class Sink<interface::{it.name}, Derived> : public interface::Bn{it.name[1:]} {{
    using I = interface::{it.name};

public:
{methods}}};

'''

    # Files.

    def fill(self, template, path, source, values):
        """Writes one file. A file that would not change is left alone, so that nothing is compiled for it."""
        template = (Path(__file__).parent / 'templates' / f'{template}{path.suffix}.in').read_text(encoding='utf-8')
        guard = '#pragma once\n\n' if path.suffix == '.h' else ''
        content = (f'// Written by generate.py from {source}: edit that.\n{guard}' +
                   string.Template(template).substitute(self.common, **values))
        if path.is_file() and path.read_text(encoding='utf-8') == content:
            return
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, encoding='utf-8')

    def write_stubs(self, folder):
        include = folder / 'include' / self.common['folder']
        templates = {'enum': 'Enum', 'parcelable': 'Record', 'interface': 'Interface'}
        for it in self.all:
            used = sorted({type.name for type, _ in it.types()} & self.by_name.keys())
            values = {'name': it.name, 'full_name': it.full_name, 'doc': comment(it.doc),
                      'includes': self.includes(used), **getattr(self, it.kind)(it)}
            self.fill(templates[it.kind], include / f'{it.name}.h', it.path.name, values)
            self.fill(templates[it.kind], folder / 'src' / f'{it.name}.cpp', it.path.name, values)
            if it.kind == 'interface':
                self.fill('Server', include / f'{values["bn"]}.h', it.path.name, values)
                self.fill('Proxy', include / f'{values["bp"]}.h', it.path.name, values)

    def write_table(self, folder):
        records = [each for each in self.all if each.kind == 'parcelable']
        interfaces = [each for each in self.all if each.kind == 'interface']
        self.fill('Table', folder / 'stubs' / 'Table.h', 'the .aidl files', {
            'includes': self.includes(each.name for each in self.all),
            'traits': ''.join([*map(self.record_traits, records), *map(self.interface_traits, interfaces)]),
            'records': ', '.join(f'interface::{each.name}' for each in records),
            'interfaces': ', '.join(f'interface::{each.name}' for each in interfaces)})
        self.fill('Sinks', folder / 'stubs' / 'Sinks.h', 'the .aidl files', {
            'includes': self.includes(f'Bn{each.name[1:]}' for each in interfaces),
            'sinks': ''.join(map(self.sink, interfaces))})


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument('files', type=Path, nargs='+', help='all .aidl files of the package')
    options.add_argument('--version', type=int, default=1, help='of the interface')
    options.add_argument('--hash', default='', help='of the interface')
    options.add_argument('--stubs', type=Path, help='where include/aidl/... and src/ go')
    options.add_argument('--table', type=Path, help='where stubs/Table.h and stubs/Sinks.h go')
    given = options.parse_args()
    try:
        writer = Writer(aidl.read_files(given.files), given.version, given.hash)
        if given.stubs:
            writer.write_stubs(given.stubs)
        if given.table:
            writer.write_table(given.table)
    except (aidl.AidlError, OSError) as error:
        sys.exit(str(error))


if __name__ == '__main__':
    main()

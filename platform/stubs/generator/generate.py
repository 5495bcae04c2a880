#!/usr/bin/env python3
"""Writes the C++ classes of the interface from its .aidl files, in the shape that a device's AIDL compiler gives them, and
beside them a table of methods and fields and a sink for each interface, which use only public names of the classes."""

import argparse
import json
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


def joined(parts, before=', '):
    return ''.join(before + part for part in parts)


class Package:
    """The declarations of one package, and how they are spelled in C++."""

    def __init__(self, declarations, version, hash):
        self.all = declarations
        self.by_name = {each.name: each for each in declarations}
        self.version = version
        self.hash = hash
        self.folder = 'aidl/' + declarations[0].package.replace('.', '/')
        self.namespace = self.folder.replace('/', '::')
        self.records, self.interfaces = ([each for each in declarations if each.kind == kind]
                                         for kind in ('parcelable', 'interface'))

    def kind(self, type):
        return self.by_name[type.name].kind if type.name in self.by_name else ''

    def is_scalar(self, type):
        return not type.is_array and (type.name in SCALARS or self.kind(type) == 'enum')

    def cpp(self, type, scope=''):
        if type.name in self.by_name:
            name = scope + type.name
        else:
            name = 'std::string' if type.name == 'String' else SCALARS[type.name][0]
        if type.is_array:
            return 'std::vector<uint8_t>' if type.name == 'byte' else f'std::vector<{name}>'
        return f'std::shared_ptr<{name}>' if self.kind(type) == 'interface' else name

    def field(self, field):
        value = field.value.replace('.', '::') or SCALARS.get(field.type.name, ('', '{}'))[1]
        return f'{self.cpp(field.type)} {field.name}' + (f' = {value};' if self.is_scalar(field.type) else ';')

    def parameter(self, type, scope=''):
        return self.cpp(type, scope) if self.is_scalar(type) else f'const {self.cpp(type, scope)}&'

    def parameters(self, method, scope=''):
        return ', '.join(f'{self.parameter(each.type, scope)} in_{each.name}' for each in method.arguments)

    def includes(self, *names):
        return ''.join(f'#include <{self.folder}/{name}.h>\n' for name in names)

    def dependencies(self, declaration):
        return self.includes(*sorted({type.name for type, _ in declaration.types()} & self.by_name.keys()))

    def in_namespace(self, body):
        return f'\nnamespace {self.namespace} {{\n\n{body}\n}}  // namespace {self.namespace}\n'


def enum_header(package, it):
    full = f'::{package.namespace}::{it.name}'
    enumerators = ''.join(f'{comment(each.doc, "    ")}    {each.name} = {each.value},\n' for each in it.members)
    values = ''.join(f'    {full}::{each.name},\n' for each in it.members)
    return '#include <android/binder_enums.h>\n\n#include <array>\n#include <cstdint>\n#include <string>\n' + \
        package.in_namespace(f'''{comment(it.doc)}enum class {it.name} : int32_t {{
{enumerators}}};

// The name, or the number in digits for a value without one.
[[nodiscard]] std::string toString({it.name} value);
''') + f'''
namespace ndk::internal {{

template <>
inline constexpr std::array<{full}, {len(it.members)}> enum_values<{full}> = {{
{values}}};

}}  // namespace ndk::internal
'''


def enum_source(package, it):
    cases = ''.join(f'        case {it.name}::{each.name}:\n            return {text(each.name)};\n' for each in it.members)
    return package.includes(it.name) + package.in_namespace(f'''std::string toString({it.name} value) {{
    switch (value) {{
{cases}    }}
    return std::to_string(static_cast<int32_t>(value));
}}
''')


def record_header(package, it):
    fields = ''.join(f'{comment(each.doc, "    ")}    {package.field(each)}\n' for each in it.members)
    return package.dependencies(it) + f'''#include <android/binder_parcel.h>

#include <compare>
#include <cstdint>
#include <string>
#include <vector>
''' + package.in_namespace(f'''{comment(it.doc)}class {it.name} {{
public:
    static const char* descriptor;

{fields}
    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;
    std::string toString() const;
    auto operator<=>(const {it.name}&) const = default;
}};
''')


def record_source(package, it):
    fields = joined(each.name for each in it.members)
    named = ''.join(f'\n        .add({text(each.name)}, {each.name})' for each in it.members)
    return package.includes(it.name) + '\n#include "Record.h"\n' + package.in_namespace(
        f'''const char* {it.name}::descriptor = {text(it.full_name)};

binder_status_t {it.name}::readFromParcel(const AParcel* parcel) {{
    return ::subsys_stubs::readRecord(parcel{fields});
}}

binder_status_t {it.name}::writeToParcel(AParcel* parcel) const {{
    return ::subsys_stubs::writeRecord(parcel{fields});
}}

std::string {it.name}::toString() const {{
    return ::subsys_stubs::RecordText({text(it.name)}){named}
        .end();
}}
''')


def version_and_hash(kind, version='', hash=''):
    """The two methods that every interface has, with these bodies."""
    prefix = 'virtual ' if kind == '= 0' else ''
    def body(code):
        return f' {{\n        {code}\n    }}' if code else ';'
    return (f'    {prefix}{STATUS} getInterfaceVersion(int32_t* _aidl_return) {kind}{body(version)}\n'
            f'    {prefix}{STATUS} getInterfaceHash(std::string* _aidl_return) {kind}{body(hash)}\n')


def constants(version, hash):
    return [f'*_aidl_return = {value};\n        return {STATUS}::ok();' for value in (version, hash)]


def pure_methods(package, it):
    return ''.join(f'{comment(each.doc, "    ")}    virtual {STATUS} {each.name}({package.parameters(each)}) = 0;\n'
                   for each in it.members)


def default_methods(package, it):
    return ''.join(f'''    {STATUS} {each.name}({', '.join(package.parameter(argument.type) for argument in each.arguments)}) override {{
        return {STATUS}::fromStatus(STATUS_UNKNOWN_TRANSACTION);
    }}
''' for each in it.members)


def proxy_methods(package, it):
    return ''.join(f'    {STATUS} {each.name}({package.parameters(each)}) override;\n' for each in it.members)


def interface_header(package, it):
    codes = ''.join(f'    static constexpr uint32_t TRANSACTION_{each.name} = FIRST_CALL_TRANSACTION + {code};\n'
                    for code, each in enumerate(it.members))
    return package.dependencies(it) + f'''#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>
''' + package.in_namespace(f'''{comment(it.doc)}class {it.name} : public ::ndk::ICInterface {{
public:
    static const char* descriptor;
    static inline const int32_t version = {package.version};
    static inline const std::string hash = {text(package.hash)};
{codes}
    ~{it.name}() override;

    // The object itself when it is local, else a proxy; null for null and for an object of another interface.
    static std::shared_ptr<{it.name}> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<{it.name}>& instance);
    // A null object, or one of another interface, is read as a null pointer and is no error.
    static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<{it.name}>* instance);
    // What proxies of this process call when the server does not know a method. Call it once, before the first proxy is
    // used: false for null and when there is one already.
    static bool setDefaultImpl(const std::shared_ptr<{it.name}>& impl);
    static const std::shared_ptr<{it.name}>& getDefaultImpl();

{pure_methods(package, it)}{version_and_hash('= 0')}
private:
    static std::shared_ptr<{it.name}>& defaultImpl();
}};

// Answers STATUS_UNKNOWN_TRANSACTION to everything, so that a default implementation overrides only what it wants.
class {it.name}Default : public {it.name} {{
public:
    ::ndk::SpAIBinder asBinder() override {{ return {{}}; }}
    bool isRemote() override {{ return false; }}
{default_methods(package, it)}{version_and_hash('override', *constants('0', '""'))}}};
''')


def server_header(package, it):
    return package.includes(it.name) + package.in_namespace(
        f'''// Derive from it to serve {it.name}; construct with ndk::SharedRefBase::make.
class Bn{it.name[1:]} : public ::ndk::BnCInterface<{it.name}> {{
public:
{version_and_hash('final', *constants('version', 'hash'))}
protected:
    ::ndk::SpAIBinder createBinder() override;
}};
''')


def proxy_header(package, it):
    return package.includes(it.name) + '#include <stubs/VersionCache.h>\n' + package.in_namespace(
        f'''class Bp{it.name[1:]} : public ::ndk::BpCInterface<{it.name}> {{
public:
    explicit Bp{it.name[1:]}(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {{}}
{proxy_methods(package, it)}    // Asked once for each proxy; a failure is not kept.
{version_and_hash('override', *(f'return mCache.{what}(asBinder(), _aidl_return);' for what in ('version', 'hash')))}
private:
    ::subsys_stubs::VersionCache mCache;
}};
''')


def interface_source(package, it):
    name, bn, bp = it.name, 'Bn' + it.name[1:], 'Bp' + it.name[1:]
    cases = ''.join(f'''        case {name}::TRANSACTION_{each.name}:
            return ::subsys_stubs::serve(*service, &{name}::{each.name}, in, {'nullptr' if it.is_oneway else 'out'});
''' for each in it.members)
    calls = ''.join(f'''
{STATUS} {bp}::{each.name}({package.parameters(each)}) {{
    return ::subsys_stubs::call(asBinder(), TRANSACTION_{each.name}, {'FLAG_ONEWAY' if it.is_oneway else '0'},
                                &{name}::{each.name}{joined(f'in_{argument.name}' for argument in each.arguments)});
}}
''' for each in it.members)
    return package.includes(bn, bp, name) + '\n#include "Transaction.h"\n' + package.in_namespace(
        f'''const char* {name}::descriptor = {text(it.full_name)};

namespace {{

binder_status_t onTransact{name}(AIBinder* binder, transaction_code_t code, const AParcel* in, AParcel* out) {{
    const auto service = std::static_pointer_cast<{name}>(::ndk::ICInterface::asInterface(binder));
    switch (code) {{
{cases}        // Both are answered also on an interface that is otherwise oneway.
        case ::subsys_stubs::GET_INTERFACE_VERSION:
            return ::subsys_stubs::answer(out, {name}::version);
        case ::subsys_stubs::GET_INTERFACE_HASH:
            return ::subsys_stubs::answer(out, {name}::hash);
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }}
}}

AIBinder_Class* classOf{name}() {{
    static AIBinder_Class* const sClass = ::ndk::ICInterface::defineClass({name}::descriptor, onTransact{name});
    return sClass;
}}

}}  // namespace

{name}::~{name}() = default;

std::shared_ptr<{name}> {name}::fromBinder(const ::ndk::SpAIBinder& binder) {{
    return ::subsys_stubs::fromBinder<{name}, {bp}>(binder, classOf{name}());
}}

binder_status_t {name}::writeToParcel(AParcel* parcel, const std::shared_ptr<{name}>& instance) {{
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}}

binder_status_t {name}::readFromParcel(const AParcel* parcel, std::shared_ptr<{name}>* instance) {{
    ::ndk::SpAIBinder binder;
    const binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status == STATUS_OK) *instance = fromBinder(binder);
    return status;
}}

std::shared_ptr<{name}>& {name}::defaultImpl() {{
    static std::shared_ptr<{name}> sImpl;
    return sImpl;
}}

bool {name}::setDefaultImpl(const std::shared_ptr<{name}>& impl) {{
    if (!impl || defaultImpl()) return false;
    defaultImpl() = impl;
    return true;
}}

const std::shared_ptr<{name}>& {name}::getDefaultImpl() {{
    return defaultImpl();
}}

::ndk::SpAIBinder {bn}::createBinder() {{
    return ::ndk::SpAIBinder(AIBinder_new(classOf{name}(), static_cast<::ndk::ICInterface*>(this)));
}}
{calls}''')


def record_traits(it):
    fields = ',\n'.join(f'        field({text(each.name)}, {text(each.doc)}, &R::{each.name})' for each in it.members)
    return f'''
template <>
struct RecordTraits<package::{it.name}> {{
    using R = package::{it.name};
    static constexpr const char* name = {text(it.name)};
    static constexpr std::tuple fields{{
{fields}}};
}};
'''


def interface_traits(it):
    methods = ',\n'.join(
        f'        method(I::TRANSACTION_{each.name}, {text(each.name)}, {text(each.doc)}, &I::{each.name}'
        f'{joined(text(argument.name) for argument in each.arguments)})' for each in it.members)
    return f'''
template <>
struct InterfaceTraits<package::{it.name}> {{
    using I = package::{it.name};
    static constexpr const char* name = {text(it.name)};
    static constexpr bool oneway = {str(it.is_oneway).lower()};
    static constexpr std::tuple methods{{
{methods}}};
}};
'''


def table(package):
    records, interfaces = (joined(('package::' + it.name for it in declarations), ',\n    ')[2:]
                           for declarations in (package.records, package.interfaces))
    return package.includes(*(it.name for it in package.all)) + f'''#include <stubs/Reflection.h>

#include <tuple>

namespace subsys_stubs {{

namespace package = ::{package.namespace};
{''.join(record_traits(it) for it in package.records)}{''.join(interface_traits(it) for it in package.interfaces)}
// All of the package.
using Records = TypeList<
{records}>;
using Interfaces = TypeList<
{interfaces}>;

}}  // namespace subsys_stubs
'''


def sink(package, it):
    methods = ''.join(f'''    {STATUS} {each.name}({package.parameters(each, 'package::')}) override {{
        return static_cast<Derived*>(this)->onCall(
            methodOf<I, I::TRANSACTION_{each.name}>(){joined(f'in_{argument.name}' for argument in each.arguments)});
    }}
''' for each in it.members)
    return f'''
template <class Derived>
class Sink<package::{it.name}, Derived> : public package::Bn{it.name[1:]} {{
    using I = package::{it.name};

public:
{methods}}};
'''


def sinks(package):
    return package.includes(*(f'Bn{it.name[1:]}' for it in package.interfaces)) + '''#include <stubs/Table.h>

namespace subsys_stubs {

// A local object of interface I that hands each call to one place: Derived::onCall(method, arguments...), where the
// method is its entry in the table and the return value is the call's. Derived derives from Sink<I, Derived>.
template <class I, class Derived>
class Sink;
''' + ''.join(sink(package, it) for it in package.interfaces) + '\n}  // namespace subsys_stubs\n'


def write(path, source, body):
    """A file that would not change is left alone, so that nothing is compiled for it."""
    guard = '#pragma once\n\n' if path.suffix == '.h' else ''
    content = f'// Written by generate.py from {source}: edit that.\n{guard}{body}'
    if path.is_file() and path.read_text(encoding='utf-8') == content:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(content, encoding='utf-8')


def write_stubs(package, folder):
    writers = {'enum': (enum_header, enum_source), 'parcelable': (record_header, record_source),
               'interface': (interface_header, interface_source)}
    for it in package.all:
        header, source = writers[it.kind]
        include = folder / 'include' / package.folder
        write(include / f'{it.name}.h', it.path.name, header(package, it))
        write(folder / 'src' / f'{it.name}.cpp', it.path.name, source(package, it))
        if it.kind == 'interface':
            write(include / f'Bn{it.name[1:]}.h', it.path.name, server_header(package, it))
            write(include / f'Bp{it.name[1:]}.h', it.path.name, proxy_header(package, it))


def write_table(package, folder):
    write(folder / 'stubs' / 'Table.h', 'the .aidl files', table(package))
    write(folder / 'stubs' / 'Sinks.h', 'the .aidl files', sinks(package))


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument('--aidl', type=Path, required=True, help='the folder of the .aidl files')
    options.add_argument('--version', type=int, default=1, help='of the interface')
    options.add_argument('--hash', default='', help='of the interface')
    options.add_argument('--stubs', type=Path, help='where include/aidl/... and src/ go')
    options.add_argument('--table', type=Path, help='where stubs/Table.h and stubs/Sinks.h go')
    given = options.parse_args()
    try:
        package = Package(aidl.read_folder(given.aidl), given.version, given.hash)
        if given.stubs:
            write_stubs(package, given.stubs)
        if given.table:
            write_table(package, given.table)
    except (aidl.AidlError, OSError) as error:
        sys.exit(str(error))


if __name__ == '__main__':
    main()

#!/usr/bin/env python3
"""Checks the device package. Prints a line for each fault; the exit code is 1 when there is one.

files    Android.bp, rc, VINTF fragments and policy: each alone, and against each other
compile  every C++ source of Android.bp as C++20 and C++23 without type information, where the compiler finds only those
         headers that a device offers its module; and the table of packaging/README.md against the objects of the library"""

import argparse
import re
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True  # the source folder stays as it is
import blueprint  # noqa: E402
import contract  # noqa: E402
import device_files  # noqa: E402
from build import ROOMS, Build  # noqa: E402
from compiler import Compiler  # noqa: E402

STANDARDS = 'c++20', 'c++2b'


def library_sources(root):
    return '\n'.join(path.read_text() for room in ROOMS for path in sorted((root / room).glob('**/*'))
                     if path.suffix in ('.cpp', '.h'))


def version_faults(root, build):
    """The daemon's version is the project's."""
    version = re.search(r'project\(subsys VERSION ([\d.]+)', (root / 'CMakeLists.txt').read_text())[1]
    flags = [flag for module in build.modules.values() for flag in module.properties.get('cflags', [])
             if flag.startswith('-DSUBSYS_VERSION=')]
    return [f'Android.bp: {flag}, but the project has version {version}' for flag in flags if f'"{version}"' not in flag]


def check_files(root, daemon):
    build = Build(root)
    folder = root / 'packaging'
    package, version = build.interface()
    instance = f'{package}.ISubsys/default'
    installed = {name: build.installed(module) for name, module in build.modules.items()}
    hal = {'name': package, 'version': version}
    return [
        *build.check(),
        *version_faults(root, build),
        *device_files.check_rc(folder / 'subsysd.rc', installed.get('subsysd'), instance, daemon),
        *device_files.check_vintf(folder / 'subsysd.xml', 'manifest', 'device', hal | {'fqname': 'ISubsys/default'}),
        *device_files.check_vintf(folder / 'compatibility_matrix.xml', 'compatibility-matrix', 'framework',
                                  hal | {'interface/name': 'ISubsys', 'interface/instance': 'default'}),
        *device_files.check_contexts(folder / 'sepolicy', installed.values(), instance, library_sources(root)),
        *device_files.check_policy(folder / 'sepolicy/subsysd.te', folder / 'check/device_policy'),
    ]


def check_compile(root, program, stubs):
    build = Build(root, stubs)
    with tempfile.TemporaryDirectory() as out:
        compiler = Compiler(build, program, out)
        objects = compiler.objects(build.modules['libsubsys'])
        readme = (root / 'packaging/README.md').read_text()
        return compiler.check(STANDARDS) or contract.check(readme, objects, library_sources(root))


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument('what', choices=['files', 'compile'])
    options.add_argument('--root', type=Path, required=True, help='the project')
    options.add_argument('--daemon', type=Path, help='files: the built subsysd, which is given the options of the rc file')
    options.add_argument('--compiler', default='clang++', help='compile: the compiler')
    options.add_argument('--stubs', type=Path, help='compile: the folder of the generated headers of the interface')
    given = options.parse_args()
    try:
        root = given.root.resolve()
        faults = (check_files(root, given.daemon) if given.what == 'files' else
                  check_compile(root, given.compiler, given.stubs))
    except blueprint.BlueprintError as error:
        faults = [f'Android.bp:{error}']
    print('\n'.join(faults) or 'the device package is right')
    sys.exit(1 if faults else 0)


if __name__ == '__main__':
    main()

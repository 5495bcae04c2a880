"""Tests of the checks: each fault that someone could make is put into a copy of the package, or into a project of one
source, and has to be found."""

import os
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
FOLDER = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(FOLDER / 'check'))
import blueprint  # noqa: E402
import check  # noqa: E402

# File, its text, what replaces it, what the check has to say.
FAULTS = [
    ('Android.bp', '"rf/*.cpp",', '', 'no module has rf/IccCommands.cpp'),
    ('Android.bp', '"host/Options.cpp"', '"host/Option.cpp"', 'srcs: no file host/Option.cpp'),
    ('Android.bp', 'header_libs:', 'header_lib:', 'cc_binary has no property header_lib'),
    ('Android.bp', 'defaults: ["subsys_defaults"]', 'defaults: "subsys_defaults"', 'defaults is no list'),
    ('Android.bp', '"libtinyxml2"', '"libtinyxml"', 'shared_libs: no module libtinyxml'),
    ('Android.bp', '["libsubsys_daemon"]', '["libsubsys_host"]', 'required: no module libsubsys_host'),
    ('Android.bp', 'subsys-V5-ndk', 'subsys-V4-ndk', "'version': '4'"),
    ('Android.bp', 'SUBSYS_VERSION=\\"', 'SUBSYS_VERSION=\\"9.', 'but the project has version'),
    ('Android.bp', 'vendor: true,', 'vendor: true', 'expected , or }'),
    ('subsysd.rc', '/vendor/bin/hw/subsysd', '/vendor/bin/subsysd', 'expected a service that starts /vendor/bin/hw/subsysd'),
    ('subsysd.rc', '--load-dir', '--load-folder', 'the daemon does not take --load-folder'),
    ('subsysd.rc', 'class hal', 'clas hal', 'subsysd.rc:5: no such option: clas hal'),
    ('subsysd.rc', 'KILL\n', 'SIGKILL\n', 'no capability SIGKILL'),
    ('subsysd.rc', 'ISubsys/default', 'ISubsys/other', 'expected the interface aidl'),
    ('subsysd.xml', '</fqname>', '</name>', 'mismatched tag'),
    ('subsysd.xml', 'ISubsys/default', 'ISubsys/other', "subsysd.xml: expected {"),
    ('sepolicy/file_contexts', 'hw/subsysd', 'subsysd', 'file_contexts:1: nothing has the name /vendor/bin/subsysd'),
    ('sepolicy/service_contexts', 'vendor_subsys_service', 'subsys_service', 'the policy has no type subsys_service'),
    ('sepolicy/subsysd.te', 'process sigkill;', 'process sigkill', 'syntax error'),
    ('sepolicy/subsysd.te', 'binder_use(', 'binder_user(', 'no macro binder_user with 1 arguments'),
    ('sepolicy/subsysd.te', 'set_prop(vendor_init', 'set_prop(vendor_int', 'no type vendor_int'),
]

BLUEPRINTS = [
    ('x = 1\ny = x + 2 + "a"', '2: values of two kinds are added'),
    ('cc_library { srcs: ["a" "b"] }', "1: expected , or ], found \"b\""),
    ('cc_library {', 'expected name, found the end of the file'),
]

# A source, and what the compiler or the table has to say of it.
SOURCES = [
    ('#include <mindroid/Object.h>\nint f(mindroid::Object& o) { return o.count(); }', None),
    ('struct A { virtual ~A(); }; struct B : A {}; B* f(A* a) { return dynamic_cast<B*>(a); }', 'requires -frtti'),
    ('#include <android/binder_manager.h>', 'file not found'),
    ('namespace hal { void g(); } void f() { hal::g(); }', 'libsubsys lacks hal::g()'),
    ('#include <mindroid/Object.h>\nint f(mindroid::Object& o) { return o.count() + o.more(); }', 'lacks Object::more'),
    ('int f() { return 0; }', 'does not use Object::count'),
]
BLUEPRINT = '''
cc_library_shared {
    name: "libsubsys",
    cflags: ["-Wall", "-Wextra", "-Werror"],
    srcs: ["rf/*.cpp"],
    local_include_dirs: ["."],
    shared_libs: ["libmindroid"],
}
'''
GENRULE = '''
python_binary_host { name: "tool", main: "tool.py", srcs: ["tool.py"] }
genrule { name: "made", tools: ["tool"], srcs: ["rf/*.cpp"], cmd: "$(location tool) $(in) > $(genDir)/a.h", out: ["a.h", "b.h"] }
'''
HEADER = '''#pragma once
namespace mindroid {
struct Object {
    int count() { return 1; }
    int more() { return 2; }
};
}
'''
TABLE = '| `Object` | `count` | a number |\n'


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


class CheckTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)

    def copy_project(self):
        """The package as files of its own, all else as links."""
        for path in FOLDER.parent.iterdir():
            if path.name not in ('Android.bp', 'packaging') and not path.name.startswith(('.', 'build')):
                (self.root / path.name).symlink_to(path)
        files = [FOLDER.parent / 'Android.bp', *(path for path in FOLDER.glob('**/*') if path.is_file())]
        for file in files:
            write(self.root / file.relative_to(FOLDER.parent), file.read_text())

    def package_faults(self):
        try:
            return '\n'.join(check.check_files(self.root, os.environ.get('SUBSYSD')))
        except blueprint.BlueprintError as error:
            return str(error)

    def test_files_when_faulty_then_reported(self):
        self.copy_project()
        self.assertEqual(self.package_faults(), '')
        for name, old, new, expected in FAULTS:
            with self.subTest(file=name, old=old, new=new):
                file = self.root / ('' if name == 'Android.bp' else 'packaging') / name
                right = file.read_text()
                self.assertIn(old, right)
                file.write_text(right.replace(old, new, 1))
                self.assertIn(expected, self.package_faults())
                file.write_text(right)
        write(self.root / 'packaging/Android.bp', '')
        self.assertIn('packaging/Android.bp: the one at the root is the only one', self.package_faults())

    def test_parse_when_no_blueprint_then_line_and_reason(self):
        for text, expected in BLUEPRINTS:
            with self.subTest(text=text), self.assertRaisesRegex(blueprint.BlueprintError, expected.replace(']', r'\]')):
                blueprint.parse(text)

    def compile_faults(self):
        write(self.root / 'packaging/README.md', TABLE)
        return '\n'.join(check.check_compile(self.root, 'clang++', None))

    def test_compile_when_faulty_then_reported(self):
        write(self.root / 'Android.bp', BLUEPRINT)
        write(self.root / 'platform/mindroid/include/mindroid/Object.h', HEADER)
        for source, expected in SOURCES:
            with self.subTest(source=source):
                write(self.root / 'rf/Source.cpp', source)
                faults = self.compile_faults()
                self.assertEqual(faults, '') if expected is None else self.assertIn(expected, faults)
        write(self.root / 'mindroid/Object.h', HEADER)
        self.assertIn('hides mindroid/Object.h of libmindroid', self.compile_faults())

    def test_compile_when_genrule_makes_other_files_then_reported(self):
        write(self.root / 'Android.bp', BLUEPRINT + GENRULE)
        write(self.root / 'tool.py', 'import sys; print(sys.argv[1])')
        write(self.root / 'rf/Source.cpp', '')
        self.assertIn("Android.bp:11: made ['a.h']", self.compile_faults())


if __name__ == '__main__':
    unittest.main()

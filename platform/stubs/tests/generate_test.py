"""What the generator refuses, and what it leaves alone. Run as generate_test.py <generate.py>."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

GENERATOR = sys.argv.pop(1)

RECORD = '''package a.b;
parcelable Info {
    int id;
}
'''
ENUM = '''package a.b;
@Backing(type="int")
enum Colour {
    RED = 1,
}
'''
INTERFACE = '''package a.b;
import a.b.Info;
oneway interface IWatch {
    void changed(in Info info);
}
'''
FILES = {'Info': RECORD, 'Colour': ENUM, 'IWatch': INTERFACE}

# The file that is written in place of one of FILES, or beside them; the line; what the generator says.
REFUSED = [
    ('Info', 'parcelable Info {}', 1, "expected 'package', found 'parcelable'"),
    ('../c/Less', RECORD.replace('a.b.Info', 'a.c.Less').replace('a.b', 'a.c').replace('Info', 'Less'), 2,
     "one package at a time: 'a.b.Colour' is of another one"),
    ('Info', RECORD.replace('a.b', 'a.c'), 2, "'a.c.Info' belongs into a/c/Info.aidl"),
    ('Info', RECORD.replace('Info', 'Other'), 2, "'a.b.Other' belongs into a/b/Other.aidl"),
    ('Info', RECORD + 'parcelable More {}', 5, "one declaration a file: 'parcelable' is one too many"),
    ('Info', RECORD.replace('}', ''), 5, "expected a type, found 'the end'"),
    ('Info', RECORD.replace('parcelable', 'union'), 2,
     "'union' is not supported: expected interface, parcelable or enum"),
    ('Info', RECORD.replace('parcelable', 'oneway parcelable'), 2,
     "'parcelable' is not supported: expected interface, parcelable or enum"),
    ('Info', RECORD.replace('int id', 'List<int> ids'), 3, "'<' is not supported here"),
    ('Info', RECORD.replace('int id', '@nullable String id'), 3, "expected a type, found '@nullable'"),
    ('Info', RECORD.replace('int id', 'float id'), 3, "'float' is not a known type"),
    ('Info', RECORD.replace('int id', 'int[][] id'), 3, "expected a field, found '['"),
    ('Info', RECORD.replace('int id', 'IWatch watch'), 3,
     "'IWatch': an interface can be an argument, but no field and no array"),
    ('Info', RECORD.replace('int id', 'Info next'), 2, "'Info' needs itself: Info > Info"),
    ('Info', RECORD.replace('int id;', 'int id;\n    long id;'), 4, "'id' is declared twice"),
    ('Info', RECORD.replace('int id', 'int id = 5'), 3, "expected an enumerator, found '5'"),
    ('Info', RECORD.replace('int id', 'Colour id = Colour.BLUE'), 3,
     "'Colour.BLUE': a default is an enumerator of the field's own type"),
    ('Info', RECORD.replace('int id', 'int id = Colour.RED'), 3,
     "'Colour.RED': a default is an enumerator of the field's own type"),
    ('Info', RECORD.replace('int id;', 'int id'), 4, "expected ';', found '}'"),
    ('Info', '@Hide\n' + RECORD, 1, "expected 'package', found '@Hide'"),
    ('Colour', ENUM.replace('"int"', '"byte"'), 2,
     "'@Backing(type=\"byte\")' is not supported"),
    ('Colour', ENUM.replace('@Backing(type="int")\n', ''), 2,
     '@Backing(type="int") belongs to an enum, and every enum needs it'),
    ('Colour', ENUM.replace(' = 1', ''), 4, "expected '=', found ','"),
    ('Colour', ENUM.replace('1', 'GREEN'), 4, "expected a decimal number, found 'GREEN'"),
    ('Colour', ENUM.replace('1,', '1,\n    RED = 2'), 5, "'RED' is declared twice"),
    ('IWatch', INTERFACE.replace('void changed', 'int changed'), 4,
     "a method returns void, not 'int': answers come to a callback"),
    ('IWatch', INTERFACE.replace('in Info', 'out Info'), 4, "an argument is 'in', not 'out'"),
    ('IWatch', INTERFACE.replace('in Info info', 'in Info info in int id'), 4, "expected ',', found 'in'"),
    ('IWatch', INTERFACE.replace('(in Info info)', '(in Info info) = 7'), 4, "expected ';', found '='"),
    ('IWatch', INTERFACE.replace('in Info info', 'in IWatch other'), 3, "'IWatch' needs itself: IWatch > IWatch"),
    ('IWatch', INTERFACE.replace('import a.b.Info', 'import a.b.Missing'), 2, "'a.b.Missing' is not among the files"),
    ('Watch', INTERFACE.replace('IWatch', 'Watch'), 3,
     "'Watch': an interface begins with I and a capital letter, and nothing else does"),
    ('IThing', RECORD.replace('Info', 'IThing'), 2,
     "'IThing': an interface begins with I and a capital letter, and nothing else does"),
]


class GeneratorTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def generate(self, files):
        for name, text in files.items():
            path = self.folder / 'aidl/a/b' / f'{name}.aidl'
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        out = self.folder / 'out'
        return subprocess.run([sys.executable, GENERATOR, '--version', '3', '--stubs', out, '--table', out / 'include',
                               *(self.folder / 'aidl').rglob('*.aidl')], capture_output=True, text=True, check=False)

    def written(self):
        return {path: path.stat().st_mtime_ns for path in (self.folder / 'out').rglob('*') if path.is_file()}

    def test_generate_when_it_does_not_know_what_it_reads_then_file_line_and_why(self):
        for name, text, line, message in REFUSED:
            with self.subTest(message=message):
                self.setUp()
                result = self.generate({**FILES, name: text})
                path = (self.folder / 'aidl/a/b' / f'{name}.aidl').resolve()
                self.assertEqual(f'{path}:{line}: {message}\n', result.stderr)
                self.assertEqual(1, result.returncode)
                self.assertEqual({}, self.written())

    def test_generate_when_a_method_is_added_then_its_files_change_and_no_others(self):
        self.assertEqual('', self.generate(FILES).stderr)
        before = self.written()
        added = '    /** Is over. */\n    void ended(in int id, in Colour[] all);\n}'
        self.generate({'IWatch': INTERFACE.replace('}', added)})
        changed = {path.name for path, time in self.written().items() if before.get(path) != time}
        self.assertEqual({'IWatch.h', 'BpWatch.h', 'IWatch.cpp', 'Table.h', 'Sinks.h'}, changed)
        table = (self.folder / 'out/include/stubs/Table.h').read_text()
        self.assertIn('method(I::TRANSACTION_ended, "ended", "Is over.", &I::ended, "id", "all")', table)


if __name__ == '__main__':
    unittest.main()

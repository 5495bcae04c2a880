"""What the library uses of the closed libraries, taken from its objects, against the table of packaging/README.md."""

import re
import subprocess

# A row: classes, their names, what they promise.
ROW = re.compile(r'^\| (`\w+`(?:, `\w+`)*) \| (.*?) \|', re.MULTILINE)
NAMESPACES = 'mindroid', 'subsys_utils'


def quoted(cell):
    return re.findall(r'`(~?\w+)`', cell)


def listed(readme):
    """The names of the table: (class, member)."""
    return {(owner, name) for row in ROW.finditer(readme) for owner in quoted(row[1]) for name in quoted(row[2])}


def plain(symbol):
    """A demangled name without template arguments, parameters and ABI tags."""
    previous = None
    while symbol != previous:
        previous, symbol = symbol, re.sub(r'<[^<>]*>|\([^()]*\)|\[abi:\w+\]', '', symbol)
    return symbol


def members(objects):
    """The members of the closed libraries' classes in the objects: (class, member)."""
    symbols = subprocess.run(['nm', '-C', *objects], capture_output=True, text=True, check=True).stdout
    names = re.findall(rf'\b(?:{"|".join(NAMESPACES)})::(\w+)::(~?\w+)', '\n'.join(map(plain, symbols.splitlines())))
    return set(names)


def written(sources):
    """The words of the library's sources without comments: what its text uses."""
    return set(re.findall(r'\w+', re.sub(r'//[^\n]*', '', sources)))


def check(readme, objects, sources):
    """A name that the library uses and the table lacks, or the other way round."""
    table, words = listed(readme), written(sources)
    # What only the headers here use has no word in the library. A pointer is used by its operators.
    used = {(owner, name) for owner, name in members(objects)
            if name.lstrip('~') in words and owner in words and owner != 'sp'}
    missing = [f'README.md: the table lacks {owner}::{name}, which the library uses' for owner, name in used - table]
    unused = [f'README.md: the library does not use {owner}::{name}' for owner, name in table
              if owner not in words or name.lstrip('~') not in words]
    return sorted(missing + unused)

"""The other files of the device package: rc, VINTF fragments, policy. Each check returns its faults, one line each."""

import re
import subprocess
import tempfile
from pathlib import Path
from xml.etree import ElementTree

# Option of a service in an rc file: how many arguments it takes.
RC_OPTIONS = {'class': (1, 9), 'user': (1, 1), 'group': (1, 13), 'capabilities': (1, 40), 'interface': (2, 2),
              'disabled': (0, 0), 'oneshot': (0, 0), 'priority': (1, 1), 'task_profiles': (1, 9)}
# Macros of the platform's policy: how many arguments they take.
MACROS = {'init_daemon_domain': 1, 'binder_use': 1, 'add_service': 2, 'binder_call': 2, 'vendor_internal_prop': 1,
          'get_prop': 2, 'set_prop': 2}
CONTEXT = r'u:object_r:(?P<type>\w+):s0'
# What a line of each file of contexts looks like.
CONTEXTS = {
    'file_contexts': rf'(?P<name>/\S+) {CONTEXT}',
    'genfs_contexts': rf'genfscon (?P<name>proc /\S+) {CONTEXT}',
    'service_contexts': rf'(?P<name>[\w./]+) {CONTEXT}',
    'property_contexts': rf'(?P<name>[\w.]+) {CONTEXT} exact (bool|int|uint|string)',
}


def statements(path):
    """The number and the words of each line that is neither blank nor a comment."""
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line.split() and not line.lstrip().startswith('#'):
            yield number, ' '.join(line.split())


def capabilities():
    text = Path('/usr/include/linux/capability.h').read_text()
    return set(re.findall(r'^#define CAP_(\w+)\s+\d+', text, re.MULTILINE))


def check_rc(path, binary, instance, daemon=None):
    """The rc file starts this binary for this instance; `daemon`, where it is built, takes the options."""
    faults, seen = [], {}
    for number, line in statements(path):
        name, *arguments = line.split()
        if name == 'service':
            seen[name] = arguments
        elif name not in RC_OPTIONS or not RC_OPTIONS[name][0] <= len(arguments) <= RC_OPTIONS[name][1]:
            faults.append(f'{path.name}:{number}: no such option: {line}')
        else:
            seen[name] = arguments
    if seen.get('service', [])[1:2] != [binary]:
        return faults + [f'{path.name}: expected a service that starts {binary}']
    faults += [f'{path.name}: no {name}' for name in ('user', 'group', 'interface') if name not in seen]
    faults += [f'{path.name}: no capability {each}' for each in set(seen.get('capabilities', [])) - capabilities()]
    if seen.get('user') == ['root']:
        faults.append(f'{path.name}: the daemon needs no root')
    if seen.get('interface', ['aidl', instance]) != ['aidl', instance]:
        faults.append(f'{path.name}: expected the interface aidl {instance}')
    if daemon and subprocess.run([daemon, *seen['service'][2:], '--help'], capture_output=True).returncode != 0:
        faults.append(f'{path.name}: the daemon does not take {" ".join(seen["service"][2:])}')
    return faults


def texts(element, above=''):
    """The text of each element without children, by its path below the hal."""
    for child in element:
        if len(child):
            yield from texts(child, f'{above}{child.tag}/')
        else:
            yield above + child.tag, child.text


def check_vintf(path, tag, type, expected):
    """A manifest or a matrix with one AIDL HAL, whose elements have these texts."""
    try:
        root = ElementTree.parse(path).getroot()
    except ElementTree.ParseError as error:
        return [f'{path.name}: {error}']
    if root.tag != tag or root.get('type') != type or [hal.get('format') for hal in root] != ['aidl']:
        return [f'{path.name}: expected a {tag} of type {type} with one hal of format aidl']
    found = dict(texts(root[0]))
    return [] if found == expected else [f'{path.name}: expected {expected}, found {found}']


def read_contexts(folder):
    """The contexts by file: (line, name, type) each; and the lines that are none."""
    contexts, faults = {}, []
    for file, pattern in CONTEXTS.items():
        contexts[file] = []
        for number, line in statements(folder / file):
            match = re.fullmatch(pattern, line)
            if match:
                contexts[file].append((number, match['name'], match['type']))
            else:
                faults.append(f'{file}:{number}: not understood: {line}')
    return contexts, faults


def declared_types(policy):
    return set(re.findall(r'^(?:type |attribute |vendor_internal_prop\()(\w+)', policy.read_text(), re.MULTILINE))


def check_contexts(folder, installed, instance, sources):
    """Each context has a type of the policy, and a name that is installed, served or used by the sources."""
    contexts, faults = read_contexts(folder)
    known = {
        'file_contexts': lambda name: any(re.fullmatch(name, path) for path in installed),
        'genfs_contexts': lambda name: f'"/{name.replace(" ", "")}"' in sources,
        'service_contexts': lambda name: name == instance,
        'property_contexts': lambda name: f'"{name}"' in sources,
    }
    types = declared_types(folder / 'subsysd.te')
    for file, lines in contexts.items():
        if not lines:
            faults.append(f'{file}: no context')
        for number, name, type in lines:
            if not known[file](name):
                faults.append(f'{file}:{number}: nothing has the name {name}')
            if type not in types:
                faults.append(f'{file}:{number}: the policy has no type {type}')
    return faults


def check_macro(place, name, arguments, names):
    if MACROS.get(name) != len(arguments):
        return [f'{place}: no macro {name} with {len(arguments)} arguments']
    return [f'{place}: no type {each}' for each in arguments if each not in names]


def check_policy(policy, required):
    """The macros by their names and arguments, all other statements by checkmodule. `required` declares what the
    policy of a device brings."""
    faults, plain = [], []
    names = declared_types(policy) | set(re.findall(r'\w+', required.read_text()))
    for number, line in enumerate(policy.read_text().splitlines(), 1):
        macro = re.fullmatch(r'(\w+)\((.*)\)', line)
        if macro:
            faults += check_macro(f'{policy.name}:{number}', macro[1], re.split(r', *', macro[2]), names)
        plain.append('' if macro else line)
    return faults + compile_policy(policy.name, required, plain)


def compile_policy(name, required, lines):
    with tempfile.TemporaryDirectory() as folder:
        module = Path(folder) / name
        # On one line, so that checkmodule counts as the file does.
        head = ' '.join(line for _, line in statements(required))
        module.write_text(f'module {module.stem} 1.0; require {{ {head} }} {"".join(line + chr(10) for line in lines)}')
        result = subprocess.run(['checkmodule', '-M', '-m', '-o', module.with_suffix('.mod'), module],
                                capture_output=True, text=True)
    if result.returncode == 0:
        return []
    return [line.removeprefix(f'{folder}/') for line in result.stderr.splitlines() if 'ERROR' in line] or [result.stderr]

"""The modules of Android.bp as the device's build sees them: which sources, which headers, which flags."""

import os
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import blueprint

LISTS = {'cflags', 'cppflags', 'data', 'defaults', 'export_include_dirs', 'export_shared_lib_headers', 'generated_headers',
         'header_libs', 'init_rc', 'ldflags', 'local_include_dirs', 'out', 'required', 'shared_libs', 'srcs', 'static_libs',
         'test_suites', 'tool_files', 'tools', 'vintf_fragments'}
STRINGS = {'cmd', 'cpp_std', 'main', 'name', 'relative_install_path', 'stem'}
BOOLS = {'gtest', 'isolated', 'vendor'}

CC = {'name', 'defaults', 'vendor', 'cpp_std', 'cflags', 'cppflags', 'ldflags', 'srcs', 'local_include_dirs', 'shared_libs',
      'static_libs', 'header_libs', 'generated_headers', 'relative_install_path', 'stem', 'required'}
PROPERTIES = {
    'cc_defaults': CC,
    'cc_library_shared': CC | {'export_include_dirs', 'export_shared_lib_headers'},
    'cc_binary': CC | {'init_rc', 'vintf_fragments'},
    'cc_test': CC | {'data', 'gtest', 'isolated', 'test_suites'},
    'genrule': {'name', 'srcs', 'tools', 'tool_files', 'cmd', 'out', 'export_include_dirs'},
    'python_binary_host': {'name', 'main', 'srcs'},
}
FILES = 'srcs', 'data', 'init_rc', 'vintf_fragments', 'tool_files'
LIBRARIES = 'shared_libs', 'static_libs', 'header_libs'
FOLDERS = 'local_include_dirs', 'export_include_dirs'
ROOMS = 'component', 'ims', 'plugin', 'rf', 'service'
MORE_ROOMS = 'host', 'tools', 'simulator'

INTERFACE = re.compile(r'(vendor\.[\w.]+)-V(\d+)-ndk')


def supplied(root, stubs):
    """What the device's tree brings: for each module where its headers stand here; `stubs` has the interface's."""
    system = Path('/usr/include')
    return {
        'libbinder_ndk': [(root / 'platform/binder/include', 'android/*.h')],
        'libcutils': [(root / 'platform/device/linux', 'cutils/*.h')],
        'liblog': [(system / 'android', 'android/log.h')],
        'libmindroid': [(root / 'platform/mindroid/include', 'mindroid/*.h')],
        'libsubsys_utils': [(root / 'platform/utils/include', 'utils/*.h')],
        'libtinyxml2': [(system, 'tinyxml2.h')],
        'cli11_headers': [(system, 'CLI/*.hpp')],
        'nlohmann_json_headers': [(system, 'nlohmann/**/*.hpp')],
        'vendor.nuvex.hardware.subsys_interface.subsys-V5-ndk': [(folder, '**/*.h') for folder in stubs],
    }


class Build:
    def __init__(self, root, stubs=()):
        self.root = root
        self.modules = {}
        self.faults = []
        self.supplied = supplied(root, stubs)
        for module in blueprint.parse((root / 'Android.bp').read_text()):
            self.add(module)

    def fault(self, module, text):
        self.faults.append(f'Android.bp:{module.line}: {text}')

    def add(self, module):
        name = module.properties.get('name')
        if module.type not in PROPERTIES:
            return self.fault(module, f'no module type {module.type}')
        if not name or name in self.modules:
            return self.fault(module, f'no name, or the second {name}')
        self.check_properties(module)
        self.modules[name] = module._replace(properties=self.with_defaults(module))

    def check_properties(self, module):
        for name, value in module.properties.items():
            kind = list if name in LISTS else str if name in STRINGS else bool
            if name not in PROPERTIES[module.type]:
                self.fault(module, f'{module.type} has no property {name}')
            elif not isinstance(value, kind):
                self.fault(module, f'{name} is no {kind.__name__}')

    def with_defaults(self, module):
        """The module's properties behind those of its defaults, which stand above it."""
        result = {}
        for name in module.properties.get('defaults', []):
            if name in self.modules:
                result.update(self.modules[name].properties)
            else:
                self.fault(module, f'no defaults {name} above')
        for name, value in module.properties.items():
            result[name] = result[name] + value if isinstance(value, list) and name in result else value
        return result

    def files(self, module, kind='srcs'):
        for pattern in module.properties.get(kind, []):
            yield from sorted(self.root.glob(pattern))

    def check(self):
        """The faults of the blueprint: names and files that nothing has, sources that no module has."""
        for module in self.modules.values():
            self.check_names(module)
            self.check_files(module)
        self.check_all_sources()
        others = [path for path in walk(self.root) if path.name in ('Android.bp', 'Android.mk')]
        self.faults += [f'{path.relative_to(self.root)}: the one at the root is the only one'
                        for path in others if path != self.root / 'Android.bp']
        return self.faults

    def check_names(self, module):
        for kind in LIBRARIES + ('required', 'generated_headers', 'tools'):
            for name in module.properties.get(kind, []):
                if name not in self.modules and not (kind in LIBRARIES and name in self.supplied):
                    self.fault(module, f'{kind}: no module {name}')

    def check_files(self, module):
        for kind in FILES:
            for pattern in module.properties.get(kind, []):
                if not any(path.is_file() for path in self.root.glob(pattern)):
                    self.fault(module, f'{kind}: no file {pattern}')
        for kind in FOLDERS:
            for folder in module.properties.get(kind, []):
                if module.type != 'genrule' and not (self.root / folder).is_dir():
                    self.fault(module, f'{kind}: no folder {folder}')

    def check_all_sources(self):
        used = {path for module in self.modules.values() for path in self.files(module)}
        for room in ROOMS + MORE_ROOMS:
            missing = set((self.root / room).glob('**/*.cpp')) - used
            self.faults += [f'Android.bp: no module has {path.relative_to(self.root)}' for path in sorted(missing)]

    def installed(self, module):
        """Where the module's file stands on a device."""
        get = module.properties.get
        folder, end = ('bin', '') if module.type == 'cc_binary' else ('lib64', '.so')
        return '/'.join(filter(None, ['/vendor', folder, get('relative_install_path'), get('stem', get('name')) + end]))

    def interface(self):
        """Package and version of the interface that the modules link."""
        found = {INTERFACE.fullmatch(name).groups() for module in self.modules.values()
                 for name in module.properties.get('shared_libs', []) if INTERFACE.fullmatch(name)}
        if len(found) == 1:
            return found.pop()
        self.faults.append(f'Android.bp: expected one interface, found {len(found)}')
        return '', ''


def walk(root):
    for folder, folders, files in os.walk(root):
        folders[:] = [name for name in folders if not name.startswith(('.', 'build'))]
        yield from (Path(folder) / name for name in files)


class Compiler:
    """Compiles the modules' sources where only those headers can be found that the device would offer them."""

    def __init__(self, build, compiler, out):
        self.build = build
        self.compiler = compiler
        self.out = Path(out)
        self.faults = [fault for module in build.modules.values() for fault in self.shadowed(module)]

    def view(self, name):
        """A folder with the headers of a module that the device supplies, and with nothing else."""
        view = self.out / name
        if not view.is_dir():
            for folder, pattern in self.build.supplied[name]:
                for header in folder.glob(pattern):
                    link = view / header.relative_to(folder)
                    link.parent.mkdir(parents=True, exist_ok=True)
                    link.symlink_to(header)
        return view

    def exported(self, name):
        """The include folders that a module of this name gives to those that link it."""
        if name in self.build.supplied:
            return [self.view(name)]
        properties = self.build.modules[name].properties
        own = [self.build.root / folder for folder in properties.get('export_include_dirs', [])]
        return own + [folder for each in properties.get('export_shared_lib_headers', []) for folder in self.exported(each)]

    def own_folders(self, module):
        return [self.build.root / folder for kind in FOLDERS for folder in module.properties.get(kind, [])]

    def folders(self, module):
        names = [name for kind in LIBRARIES for name in module.properties.get(kind, [])]
        return self.own_folders(module) + [folder for name in names for folder in self.exported(name)]

    def shadowed(self, module):
        """A module's own folders are searched first: none may have a header that the device supplies."""
        if not module.type.startswith('cc_'):
            return
        for name in self.build.supplied:
            for header in self.view(name).glob('**/*.h*'):
                relative = header.relative_to(self.view(name))
                for folder in self.own_folders(module):
                    if (folder / relative).is_file():
                        yield f'Android.bp:{module.line}: {folder.relative_to(self.build.root)} hides {name}\'s {relative}'

    def command(self, module, source, standard):
        get = module.properties.get
        flags = get('cflags', []) + get('cppflags', [])
        includes = [f'-I{folder}' for folder in self.folders(module)]
        return [self.compiler, f'-std={standard}', '-fno-rtti', '-fPIC', '-D__ANDROID__', *flags, *includes, str(source)]

    def object(self, source):
        return self.out / (str(source.relative_to(self.build.root)).replace('/', '_') + '.o')

    def run(self, task):
        module, source, standard, objects = task
        mode = ['-O0', '-c', '-o', str(self.object(source))] if objects else ['-fsyntax-only']
        result = subprocess.run(self.command(module, source, standard) + mode, capture_output=True, text=True)
        name = source.relative_to(self.build.root)
        return f'{name}: {standard}, {module.properties["name"]}:\n{result.stderr}' if result.returncode != 0 else None

    def compile(self, standards, names=None):
        """Compiles all modules, or these; with the first of the standards, libsubsys into objects."""
        tasks = [(module, source, standard, name == 'libsubsys' and standard == standards[0])
                 for standard in standards for name, module in self.build.modules.items()
                 if module.type.startswith('cc_') and (names is None or name in names)
                 for source in self.build.files(module)]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            self.faults += filter(None, pool.map(self.run, tasks))

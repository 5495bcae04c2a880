"""The modules of Android.bp: their properties, files and dependencies."""

import os
import re
from pathlib import Path

import blueprint

LISTS = {'cflags', 'cppflags', 'defaults', 'export_include_dirs', 'export_shared_lib_headers', 'generated_headers',
         'header_libs', 'init_rc', 'ldflags', 'local_include_dirs', 'out', 'required', 'shared_libs', 'srcs', 'static_libs',
         'test_suites', 'tools', 'vintf_fragments'}
STRINGS = {'cmd', 'cpp_std', 'main', 'name', 'path', 'relative_install_path', 'stem'}
BOOLS = {'isolated', 'vendor'}

CC = {'name', 'defaults', 'vendor', 'cpp_std', 'cflags', 'cppflags', 'ldflags', 'srcs', 'local_include_dirs', 'shared_libs',
      'static_libs', 'header_libs', 'generated_headers', 'relative_install_path', 'stem', 'required'}
PROPERTIES = {
    'cc_defaults': CC,
    'cc_library_shared': CC | {'export_include_dirs', 'export_shared_lib_headers'},
    'cc_binary': CC | {'init_rc', 'vintf_fragments'},
    'cc_test': CC | {'isolated', 'test_suites'},
    'filegroup': {'name', 'path', 'srcs'},
    'genrule': {'name', 'srcs', 'tools', 'cmd', 'out'},
    'python_binary_host': {'name', 'main', 'srcs'},
}
FILES = 'srcs', 'init_rc', 'vintf_fragments'
LIBRARIES = 'shared_libs', 'static_libs', 'header_libs'
FOLDERS = 'local_include_dirs', 'export_include_dirs'
ROOMS = 'component', 'ims', 'plugin', 'rf', 'service'
MORE_ROOMS = 'host', 'tools', 'simulator', 'compliance'

INTERFACE = re.compile(r'(vendor\.[\w.]+)-V(\d+)-ndk')


def supplied(root, stubs):
    """What the device's tree brings: for each module where its headers stand here; `stubs` has the generated ones."""
    system = Path('/usr/include')
    return {
        'libbase': [(system / 'android', 'android-base/*.h')],
        'libbinder_ndk': [(root / 'platform/binder/include', 'android/*.h')],
        'libcutils': [(root / 'platform/device/linux', 'cutils/*.h')],
        'liblog': [(system / 'android', 'android/log.h')],
        'libgmock': [(system, 'gmock/**/*.h'), (system, 'gtest/**/*.h')],
        'libmindroid': [(root / 'platform/mindroid/include', 'mindroid/*.h')],
        'libsubsys_utils': [(root / 'platform/utils/include', 'utils/*.h')],
        'libtinyxml2': [(system, 'tinyxml2.h')],
        'cli11_headers': [(system, 'CLI/*.hpp')],
        'nlohmann_json_headers': [(system, 'nlohmann/**/*.hpp')],
        'vendor.nuvex.hardware.subsys_interface.subsys-V5-ndk': [
            (stubs, 'aidl/**/*.h'), (root / 'platform/stubs/include', 'stubs/VersionCache.h')],
    }


class Build:
    def __init__(self, root, stubs=None):
        self.root = root
        self.modules = {}
        self.faults = []
        self.supplied = supplied(root, (stubs or root).resolve())
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

    def matching(self, pattern):
        """The files of a pattern, or of a filegroup (":name")."""
        if pattern.startswith(':'):
            return self.files(self.modules[pattern[1:]]) if pattern[1:] in self.modules else []
        return sorted(path for path in self.root.glob(pattern) if path.is_file())

    def files(self, module):
        return [path for pattern in module.properties.get('srcs', []) for path in self.matching(pattern)]

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
                if not self.matching(pattern):
                    self.fault(module, f'{kind}: no file {pattern}')
        for kind in FOLDERS:
            for folder in module.properties.get(kind, []):
                if not (self.root / folder).is_dir():
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

"""Compiles the modules of Android.bp as a device's build does: from a module's sources, with its flags, and where only
those headers can be found that the device offers it."""

import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from build import FOLDERS, LIBRARIES

# A function of the project's own namespaces, undefined (U) or defined in an object.
SYMBOL = re.compile(r' (\w) ((?:compliance|device|hal|simulator|subsysctl|test)::.*)')


class Compiler:
    def __init__(self, build, compiler, out):
        self.build = build
        self.compiler = compiler
        self.out = Path(out)
        self.faults = []
        self.modules = [module for module in build.modules.values()
                        if module.type.startswith('cc_') and module.type != 'cc_defaults']
        for name in build.supplied:
            self.offer(name)

    def offer(self, name):
        """Makes a folder with the headers of a module that the device supplies, and with nothing else."""
        for folder, pattern in self.build.supplied[name]:
            for header in folder.glob(pattern):
                link = self.out / name / header.relative_to(folder)
                link.parent.mkdir(parents=True, exist_ok=True)
                link.symlink_to(header)

    def exported(self, name):
        """The include folders that a module of this name gives to those that link it."""
        if name in self.build.supplied:
            return [self.out / name]
        properties = self.build.modules[name].properties
        own = [self.build.root / folder for folder in properties.get('export_include_dirs', [])]
        return own + [folder for each in properties.get('export_shared_lib_headers', []) for folder in self.exported(each)]

    def own_folders(self, module):
        return [self.build.root / folder for kind in FOLDERS for folder in module.properties.get(kind, [])]

    def linked(self, module):
        return [name for kind in LIBRARIES for name in module.properties.get(kind, [])]

    def folders(self, module):
        generated = [self.out / name for name in module.properties.get('generated_headers', [])]
        return self.own_folders(module) + generated + [folder for name in self.linked(module)
                                                       for folder in self.exported(name)]

    def check_shadows(self, module):
        """A module's own folders are searched first: none may have another header of a name that the device supplies."""
        for name in self.build.supplied:
            for header in (self.out / name).glob('**/*.h*'):
                relative = header.relative_to(self.out / name)
                self.faults += [f'Android.bp:{module.line}: {folder.relative_to(self.build.root)} hides {relative} of {name}'
                                for folder in self.own_folders(module)
                                if (folder / relative).is_file() and not header.samefile(folder / relative)]

    def generate(self, module):
        """Runs a genrule, whose tools are Python programs of the blueprint."""
        folder = self.out / module.properties['name']
        folder.mkdir()

        def replace(match):
            tool = self.build.modules[match[1]]
            main, = (path for path in self.build.files(tool) if path.name == tool.properties['main'])
            return f'{sys.executable} {shlex.quote(str(main))}'

        command = re.sub(r'\$\(location ([^)]*)\)', replace, module.properties['cmd'])
        sources = shlex.join(map(str, self.build.files(module)))
        command = command.replace('$(genDir)', str(folder)).replace('$(in)', sources).replace('$$', '$')
        result = subprocess.run(command, shell=True, capture_output=True, text=True)
        made = {str(path.relative_to(folder)) for path in folder.glob('**/*') if path.is_file()}
        if made != set(module.properties['out']):
            self.faults.append(f'Android.bp:{module.line}: made {sorted(made)}\n{result.stderr}')

    def object(self, module, source):
        return self.out / f'{module.properties["name"]}_{str(source.relative_to(self.build.root)).replace("/", "_")}.o'

    def objects(self, module):
        return [self.object(module, source) for source in self.build.files(module)]

    def run(self, task):
        module, source, standard, mode = task
        flags = module.properties.get('cflags', []) + module.properties.get('cppflags', [])
        includes = [f'-I{folder}' for folder in self.folders(module)]
        # GoogleTest takes the macro for the system's own headers.
        android = [] if module.type == 'cc_test' else ['-D__ANDROID__']
        command = [self.compiler, f'-std={standard}', '-fno-rtti', '-fPIC', *android, *flags, *includes, *mode, source]
        result = subprocess.run(command, capture_output=True, text=True)
        name = source.relative_to(self.build.root)
        return f'{name}: {standard}, {module.properties["name"]}:\n{result.stderr}' if result.returncode != 0 else None

    def compile(self, standards):
        """All modules with the first standard, into objects; with the others all but the tests."""
        for module in self.build.modules.values():
            if module.type == 'genrule':
                self.generate(module)
        tasks = [(module, source, standard, ['-O0', '-c', '-o', self.object(module, source)]
                  if standard == standards[0] else ['-fsyntax-only'])
                 for standard in standards for module in self.modules for source in self.build.files(module)
                 if standard == standards[0] or module.type != 'cc_test']
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            self.faults += filter(None, pool.map(self.run, tasks))

    def symbols(self, modules):
        """The project's own functions in the objects of these modules: those undefined, and those defined."""
        objects = [each for module in modules for each in self.objects(module)]
        lines = subprocess.run(['nm', '-C', *objects], capture_output=True, text=True, check=True).stdout.splitlines()
        found = [match.groups() for match in map(SYMBOL.search, lines) if match]
        return {name for kind, name in found if kind == 'U'}, {name for kind, name in found if kind not in 'Uwv'}

    def check_links(self, module):
        """What a module calls of the project stands in its own sources, or in those of the modules that it links."""
        linked = [self.build.modules[name] for name in self.linked(module) if name in self.build.modules]
        undefined, _ = self.symbols([module])
        _, defined = self.symbols([module, *linked])
        self.faults += [f'Android.bp:{module.line}: {module.properties["name"]} lacks {name}'
                        for name in sorted(undefined - defined)]

    def check(self, standards):
        for module in self.modules:
            self.check_shadows(module)
        self.compile(standards)
        if not self.faults:
            for module in self.modules:
                self.check_links(module)
        return self.faults

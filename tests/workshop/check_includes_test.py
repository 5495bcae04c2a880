#!/usr/bin/env python3
"""Whether .ci/check-includes finds what is not allowed, and nothing else."""
import pathlib
import subprocess
import sys
import tempfile
import types
import unittest

CHECK = pathlib.Path(__file__).parents[2] / ".ci" / "check-includes"
PUBLIC = {"component/Component.h"}

# A program without an ending is no module to import.
check_includes = types.ModuleType("check_includes")
exec(compile(CHECK.read_text(encoding="utf-8"), CHECK, "exec"), check_includes.__dict__)

ALLOWED = [
    ("service/A.h", '"rf/B.h"'),
    ("service/channel/A.h", '"component/B.h"'),
    ("rf/A.cpp", "<aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>"),
    ("rf/A.cpp", "<sys/stat.h>"),
    ("plugin/A.cpp", "<tinyxml2.h>"),
    ("host/A.cpp", '"component/Component.h"'),
    ("tools/A.cpp", '"stubs/Fields.h"'),
    ("platform/binder/tests/A.cpp", '"tests/support/Await.h"'),
    ("docs/A.h", '"rf/B.h"'),
]

REFUSED = [
    ("rf/A.cpp", '"service/B.h"', "rf may not include service"),
    ("service/channel/A.h", '"service/B.h"', "service/channel may not include service"),
    ("component/A.h", "<rf/B.h>", "component may not include rf"),
    ("rf/A.cpp", "<binder/peer.h>", "no name that a device has"),
    ("rf/A.cpp", "<tinyxml2.h>", "no name that a device has"),
    ("rf/A.cpp", '"B.h"', "no name that a device has"),
    ("rf/A.cpp", "HEADER", "an include that is no plain name"),
    ("rf/A.cpp", '"platform/device/include/device/DevicePath.h"', "platform headers are included by their names"),
    ("simulator/A.cpp", '"rf/Private.h"', "not a public header"),
    ("simulator/A.cpp", '"tools/B.h"', "simulator may not include tools"),
    ("platform/binder/src/A.cpp", '"component/B.h"', "platform may not include component"),
]


def check_one(file, include):
    with tempfile.TemporaryDirectory() as root:
        path = pathlib.Path(root, file)
        path.parent.mkdir(parents=True)
        path.write_text(f"#pragma once\n  # include {include}\n", encoding="utf-8")
        return check_includes.check(pathlib.Path(root), PUBLIC)


class CheckIncludes(unittest.TestCase):
    def test_check_when_allowed_then_nothing_is_said(self):
        for file, include in ALLOWED:
            with self.subTest(file=file, include=include):
                self.assertEqual(check_one(file, include), [])

    def test_check_when_refused_then_one_line_says_where_and_why(self):
        for file, include, why in REFUSED:
            with self.subTest(file=file, include=include):
                name = "" if why.startswith("an include") else include + ": "
                self.assertEqual(check_one(file, include), [f"{file}:2: {name}{why}"])

    def test_run_when_refused_then_exit_code_1(self):
        with tempfile.TemporaryDirectory() as root:
            for include, code in [("<vector>", 0), ('"rf/B.h"', 1)]:
                file = pathlib.Path(root, "component", "A.h")
                file.parent.mkdir(exist_ok=True)
                file.write_text(f"#include {include}\n", encoding="utf-8")
                result = subprocess.run([sys.executable, CHECK, root], capture_output=True, check=False)
                self.assertEqual(result.returncode, code, result.stdout)


if __name__ == "__main__":
    unittest.main()

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
    ("service/A.h", '"service/channel/B.h"'),
    ("service/channel/A.h", '"component/B.h"'),
    ("rf/A.cpp", '"service/channel/B.h"'),
    ("ims/A.cpp", "<utils/Mutex.h>"),
    ("rf/A.cpp", "<aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>"),
    ("rf/A.cpp", "<android/binder_status.h>"),
    ("rf/A.cpp", "<sys/stat.h>"),
    ("rf/A.cpp", "<vector>"),
    ("plugin/A.cpp", "<tinyxml2.h>"),
    ("host/A.cpp", '"component/Component.h"'),
    ("tools/A.cpp", '"stubs/Fields.h"'),
    ("simulator/A.cpp", '"component/Component.h"'),
    ("platform/binder/src/A.cpp", '"Log.h"'),
    ("platform/binder/tests/A.cpp", '"tests/support/Await.h"'),
    ("tests/rf/A.cpp", '"rf/B.h"'),
    ("docs/A.h", '"rf/B.h"'),
]

REFUSED = [
    ("rf/A.cpp", '"service/B.h"', "rf may not include service"),
    ("rf/A.cpp", '"ims/B.h"', "rf may not include ims"),
    ("ims/A.h", '"rf/B.h"', "ims may not include rf"),
    ("service/channel/A.h", '"service/B.h"', "service/channel may not include service"),
    ("component/A.h", '"plugin/B.h"', "component may not include plugin"),
    ("component/A.h", "<rf/B.h>", "component may not include rf"),
    ("rf/A.cpp", '"host/B.h"', "rf may not include host"),
    ("rf/A.cpp", '"tests/support/B.h"', "rf may not include tests"),
    ("rf/A.cpp", '"stubs/Fields.h"', "no name that a device has"),
    ("rf/A.cpp", "<binder/peer.h>", "no name that a device has"),
    ("rf/A.cpp", "<android-base/file.h>", "no name that a device has"),
    ("rf/A.cpp", "<tinyxml2.h>", "no name that a device has"),
    ("rf/A.cpp", '"B.h"', "no name that a device has"),
    ("rf/A.cpp", "HEADER", "an include that is no plain name"),
    ("rf/A.cpp", '"platform/device/include/device/DevicePath.h"', "platform headers are included by their names"),
    ("tools/A.cpp", '"component/Component.h"', "tools may not include component"),
    ("simulator/A.cpp", '"rf/Private.h"', "not a public header"),
    ("simulator/A.cpp", '"tools/B.h"', "simulator may not include tools"),
    ("host/A.cpp", '"service/channel/B.h"', "host may not include service/channel"),
    ("platform/binder/src/A.cpp", '"component/B.h"', "platform may not include component"),
    ("platform/binder/src/A.cpp", '"tests/support/B.h"', "platform may not include tests"),
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

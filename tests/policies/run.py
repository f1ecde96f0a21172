#!/usr/bin/env python3
"""Runs tests of the policy templates and of the administrator's page:
run.py --list | run.py BIN_FOLDER Suite.Test...

--list prints each test as "native Suite.Test" or "wine Suite.Test"; the latter needs a Wine session of its own
(tests/installer/in-new-prefix)."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / folder) for folder in ("tests/installer", "packaging/msi", "tools")]
import package
import page_test
import page_text_test
import reading_test
import template_test

MODULES = {"native": [template_test, page_text_test], "wine": [reading_test, page_test]}


def tests():
    """"Suite.Test" -> (where it runs, class)."""
    return {f"{name}.{test}": (where, suite)
            for where, modules in MODULES.items() for module in modules
            for name, suite in vars(module).items()
            if isinstance(suite, type) and issubclass(suite, unittest.TestCase) and suite.__module__ == module.__name__
            for test in vars(suite) if test[0].isupper()}


def main():
    known = tests()
    if sys.argv[1:] == ["--list"]:
        print("\n".join(f"{where} {name}" for name, (where, _) in known.items()))
        return 0
    package.bin_folder = pathlib.Path(sys.argv[1]).resolve()
    suite = unittest.TestSuite(known[name][1](name.split(".")[1]) for name in sys.argv[2:])
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    return 0 if result.wasSuccessful() and result.testsRun == len(sys.argv[2:]) > 0 else 1


if __name__ == "__main__":
    sys.exit(main())

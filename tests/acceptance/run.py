#!/usr/bin/env python3
"""Runs tests of the acceptance kit: run.py --list | run.py BIN_FOLDER Suite.Test...

--list prints each test as "native Suite.Test" or "wine Suite.Test"; the latter needs a Wine session with a prefix of
its own (tests/installer/in-new-prefix)."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / "installer")]
import acceptance_run_test
import broken_off_test
import contents_test
import package
import questions_test
import refusals_test

MODULES = {
    "native": [contents_test, questions_test],
    "wine": [acceptance_run_test, broken_off_test, refusals_test],
}


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

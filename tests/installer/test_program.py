"""Command line of a test program in Python: run.py --list | run.py BIN_FOLDER Suite.Test...

--list prints each test as "native Suite.Test" or "wine Suite.Test"; the latter needs a Wine session with a prefix of
its own (in-new-prefix). The CMake function quill_add_python_tests registers the tests with ctest."""
import pathlib
import unittest

import package


def _tests(modules):
    """"Suite.Test" -> (where it runs, class)."""
    return {f"{name}.{test}": (where, suite)
            for where, group in modules.items() for module in group
            for name, suite in vars(module).items()
            if isinstance(suite, type) and issubclass(suite, unittest.TestCase) and suite.__module__ == module.__name__
            for test in vars(suite) if test[0].isupper()}


def main(arguments, modules):
    """Lists or runs the tests of modules, {"native": [module...], "wine": [module...]}. Returns the exit code: 0 if
    each named test ran and passed."""
    known = _tests(modules)
    if arguments == ["--list"]:
        print("\n".join(f"{where} {name}" for name, (where, _) in known.items()))
        return 0
    package.bin_folder = pathlib.Path(arguments[0]).resolve()
    suite = unittest.TestSuite(known[name][1](name.split(".")[1]) for name in arguments[1:])
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    return 0 if result.wasSuccessful() and result.testsRun == len(arguments[1:]) > 0 else 1

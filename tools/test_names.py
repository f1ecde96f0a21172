"""The tests of the test programs, read from the CMake files and the sources."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent


def tests_of_programs():
    """For each program defined with quill_add_test: "Suite.Test" of each test and the names under which it runs.

    A test with parameters runs as "Instance/Suite.Test/PARAMETER", where PARAMETER stands for any of its parameters."""
    programs = {}
    for cmake in ROOT.glob("[!b.]*/**/CMakeLists.txt"):
        for program, arguments in re.findall(r"quill_add(?:_plain)?_test\((\w+)([^)]*)\)", cmake.read_text()):
            sources = [cmake.parent / source for source in re.findall(r"\S+\.cpp", arguments)]
            text = "\n".join(source.read_text() for source in sources if source.is_file())
            programs.setdefault(program, {}).update(tests_of(text))
    return programs


def tests_of(text):
    instances = re.findall(r"INSTANTIATE_TEST_SUITE_P\(\s*(\w+),\s*(\w+)", text)
    tests = {}
    for macro, suite, test in re.findall(r"^\s*(\w*TEST(?:_F|_P)?)\(\s*(\w+),\s*(\w+)\s*\)", text, re.M):
        if macro == "TEST_P":
            runs = [f"{instance}/{suite}.{test}/PARAMETER" for instance, of in instances if of == suite]
        elif macro == "TYPED_TEST":
            runs = [f"{suite}/0.{test}"]
        else:
            runs = [f"{suite}.{test}"]
        tests[f"{suite}.{test}"] = runs
    return tests

#!/usr/bin/env python3
"""Runs tests of the installer; arguments: test_program.py."""
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[2] / "packaging/msi")]
import build_test
import content_types_test
import diagnosis_page_test
import in_use_test
import installation_test
import script_test
import tables_test
import test_program
import upgrade_test

if __name__ == "__main__":
    sys.exit(test_program.main(sys.argv[1:], {
        "native": [script_test, build_test, tables_test],
        "wine": [installation_test, content_types_test, upgrade_test, in_use_test, diagnosis_page_test],
    }))

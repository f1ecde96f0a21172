#!/usr/bin/env python3
"""Runs tests of the acceptance kit; arguments: tests/installer/test_program.py."""
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / "installer")]
import acceptance_run_test
import broken_off_test
import contents_test
import installer_answers_test
import questions_test
import refusals_test
import test_program

if __name__ == "__main__":
    sys.exit(test_program.main(sys.argv[1:], {
        "native": [contents_test, questions_test],
        "wine": [acceptance_run_test, broken_off_test, installer_answers_test, refusals_test],
    }))

#!/usr/bin/env python3
"""Runs tests of the policy templates and of the administrator's page; arguments: tests/installer/test_program.py."""
import pathlib
import sys

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / folder) for folder in ("tests/installer", "packaging/msi", "tools")]
import page_test
import page_text_test
import reading_test
import template_test
import test_program

if __name__ == "__main__":
    sys.exit(test_program.main(sys.argv[1:], {
        "native": [template_test, page_text_test],
        "wine": [reading_test, page_test],
    }))

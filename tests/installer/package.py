"""Packages for the tests: built by packaging/msi/build-msi, read with msiinfo, changed with msibuild."""
import pathlib
import struct
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD_MSI = ROOT / "packaging/msi/build-msi"
LISTING = ROOT / "tests/module/registered_per_machine.txt"
LISTING_REMOVED = ROOT / "tests/module/removed_per_machine.txt"
bin_folder = ROOT / "build/release/bin"  # of the build under test
FIXED_INFO = struct.pack("<II", 0xFEEF04BD, 0x00010000)


def module():
    return bin_folder / "QuillPDF.IE.dll"


def version():
    """The version of the module under test."""
    image = module().read_bytes()
    high, low = struct.unpack_from("<II", image, image.index(FIXED_INFO) + 8)
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}"


def module_of_version(folder, text):
    """A copy of the module with another version in its resource."""
    image = bytearray(module().read_bytes())
    major, minor, build = map(int, text.split("."))
    numbers = (major << 16 | minor, build << 16)
    struct.pack_into("<IIII", image, image.index(FIXED_INFO) + 8, *numbers, *numbers)
    path = folder / f"module-{text}.dll"
    path.write_bytes(image)
    return path


def run_build(*arguments):
    """(exit code, standard error) of build-msi."""
    result = subprocess.run([BUILD_MSI, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True)
    return result.returncode, result.stderr


def build(path, text=None, files=()):
    """Builds a package of the module, or of the module with another version."""
    dll = module_of_version(path.parent, text) if text else module()
    further = [word for file in files for word in ("--file", file)]
    code, errors = run_build("--version", text or version(), "--dll", dll, "--out", path, *further)
    assert code == 0, errors
    return path


def tables(path):
    """The names of the tables."""
    output = subprocess.run(["msiinfo", "tables", path], check=True, stdout=subprocess.PIPE, text=True).stdout
    return [name for name in output.split() if not name.startswith("_")]


def table(path, name):
    """The rows of a table, as dictionaries by column."""
    output = subprocess.run(["msiinfo", "export", path, name], check=True, stdout=subprocess.PIPE).stdout
    lines = output.decode().split("\r\n")
    columns = lines[0].split("\t")
    return [dict(zip(columns, line.split("\t"))) for line in lines[3:] if line]


def change(path, *queries):
    """Changes a package by SQL."""
    for query in queries:
        subprocess.run(["msibuild", path, "-q", query], check=True, stdout=subprocess.DEVNULL)

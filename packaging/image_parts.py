"""What an image is made of: the archives and objects that were linked, the headers that were included, and the Debian
packages that these belong to."""
import collections
import os
import pathlib
import re
import subprocess


class UnknownPart(Exception):
    """A part of an image that cannot be attributed."""


Package = collections.namedtuple("Package", "name version architecture source source_version linked included")


def output_of(*command, **options):
    try:
        return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout
    except FileNotFoundError:
        raise UnknownPart(f"{command[0]} is missing: run tools/install-packages release") from None
    except subprocess.CalledProcessError as error:
        raise UnknownPart(f"{command[0]} failed: {error.stderr.strip()}") from None


def linked_modules(dump):
    """Pairs of an object's name and the file that it came from, from llvm-pdbutil's list of modules."""
    return re.findall(r"Mod \d+ \| `(.*?)`:\s+Obj: `(.*?)`", dump)


def linked_files(modules, link_map, own_folders):
    """The archives and objects that are not the project's own."""
    base_names = {re.split(r"[/\\]", name)[-1] for name, _ in modules}
    mapped = re.findall(r"^[0-9a-f]{8} [0-9a-f]{8} +\d+ {9}(\S.*?):\(", link_map, re.M)
    if not modules or not mapped:
        raise UnknownPart("the list of linked objects or the linker's map is empty")
    for name in {name.split("/")[-1] for name in mapped}:
        # The linker joins the compiled resources in an object of its own.
        if name not in base_names and not name.endswith(".res"):
            raise UnknownPart(f"{name} of the linker's map is not in the debug information")
    files = {path for _, path in modules if path}
    return {path for path in files if not path.startswith(tuple(own_folders))}


def included_headers(build, image):
    """The headers of the image's objects, by the build's record of what the compiler read."""
    objects = set(output_of("ninja", "-C", str(build), "-t", "inputs", f"bin/{image}").split("\n"))
    headers, of_image, compiled = set(), False, 0
    for line in output_of("ninja", "-C", str(build), "-t", "deps").splitlines():
        if line.startswith("    "):
            if of_image:
                headers.add(os.path.realpath(build / line.strip()))
        elif line:
            of_image = line.split(":")[0] in objects
            compiled += of_image
    if not compiled:
        raise UnknownPart(f"{build} was not built, or keeps no record of headers")
    return headers


def owners(paths):
    """The Debian package of each path."""
    real = {path: os.path.realpath(path) for path in paths}
    result = subprocess.run(["dpkg-query", "-S", *sorted(set(real.values()))], capture_output=True, text=True)
    packages = {}
    for line in result.stdout.splitlines():
        package, _, path = line.partition(": ")
        packages[path] = package.split(",")[0].split(":")[0]
    unknown = sorted(path for path in paths if real[path] not in packages)
    if unknown:
        raise UnknownPart(f"{unknown[0]} is part of the image and belongs to no Debian package")
    return {path: packages[real[path]] for path in paths}


def packages_of(linked, included):
    """The Debian packages of linked and included files, sorted by name."""
    found = owners(linked | included) if linked | included else {}
    result = []
    for name in sorted(set(found.values())):
        fields = output_of("dpkg-query", "-W", "-f",
                           "${Version}\\t${Architecture}\\t${source:Package}\\t${source:Version}", name).split("\t")
        result.append(Package(name, *fields,
                              sorted(pathlib.Path(path).name for path in linked if found[path] == name),
                              sorted(path for path in included if found[path] == name)))
    return result

#!/usr/bin/env python3
"""Puts what was built into build/package: the zips and the packages for NuGet, npm and pip, the same bytes every time.

make_package.py BUILD_FOLDER OUTPUT_FOLDER
"""

import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "scripts"))
import assembly  # noqa: E402
import pdb_file  # noqa: E402
from interface import functions  # noqa: E402

TEMPLATES = ROOT / "packaging"
DLLTOOL = "llvm-dlltool"
# The earliest that a zip can tell.
NO_DATE = (1980, 1, 1, 0, 0, 0)

# Where each file goes, and what it is there; folders with all that is in them.
SOURCES = {
    "CHANGELOG.md": "CHANGELOG.md",
    "LICENSE.txt": "LICENSE.txt",
    "NOTICES.txt": "NOTICES.txt",
    "README.md": "packaging/README.md",
    "demo.cmd": "packaging/demo.cmd",
    "docs/images/recording.png": "docs/images/recording.png",
    "docs/images/report.png": "docs/images/report.png",
    "include/korvane/korvane.h": "include/korvane/korvane.h",
    "include/korvane/korvane.hpp": "bindings/cpp/korvane/korvane.hpp",
    "include/korvane/recording.hpp": "bindings/cpp/korvane/recording.hpp",
    "lib/cmake/korvane/korvaneConfig.cmake": "packaging/korvaneConfig.cmake",
    "bindings/python": "bindings/python",
    "bindings/node": "bindings/node",
    "bindings/csharp": "bindings/csharp",
    "examples": "examples",
    "examples/stage/stage.h": "samples/stage/stage.h",
    "examples/session/order.steps.json": "samples/session/order.steps.json",
}
DOCUMENTS = ("abi", "bindings", "guide", "host", "linux", "log", "recording", "reference", "troubleshooting")
BUILT = {
    "bin/korvane.dll": "bin/korvane.dll",
    "bin/korvane.dll.debug": "bin/korvane.dll.debug",
    "bin/korvane.exe": "bin/korvane.exe",
    "bin/korvane.pdb": "bin/korvane.pdb",
    "lib/libkorvane.dll.a": "src/libkorvane.dll.a",
    "examples/stage/stage.dll": "bin/stage.dll",
    "examples/stage/order_form.exe": "bin/order_form.exe",
}
# For hosts that are tested on Linux: a zip of its own, to be unpacked over the other.
WINE = {
    "scripts/pointer_shield.py": "scripts/pointer_shield.py",
    "scripts/run_under_wine.sh": "scripts/run_under_wine.sh",
    "scripts/wine_env.sh": "scripts/wine_env.sh",
    "wine/LICENSE.txt": "LICENSE.txt",
    "wine/NOTICES.txt": "NOTICES.txt",
}
WINE_BUILT = {"wine/wine_automation.dll": "bin/wine_automation.dll"}
GENERATED = {
    "include/korvane/version.h": "version.h.in",
    "lib/cmake/korvane/korvaneConfigVersion.cmake": "korvaneConfigVersion.cmake.in",
    "lib/pkgconfig/korvane.pc": "korvane.pc.in",
    "bindings/node/index.mjs": "index.mjs.in",
    "bindings/node/package.json": "package.json.in",
    "bindings/python/pyproject.toml": "pyproject.toml.in",
    "bindings/csharp/AssemblyInfo.cs": "AssemblyInfo.cs.in",
}
# For the linkers of MSVC and mingw alike.
IMPORT_LIBRARIES = {"lib/korvane.lib": "src/korvane.def", "examples/stage/stage.lib": "samples/stage/stage.def"}
# What the NuGet package takes from the folder that the zip is made of.
NUGET = {
    "LICENSE.txt": "LICENSE.txt",
    "NOTICES.txt": "NOTICES.txt",
    "build/native/include/korvane/korvane.h": "include/korvane/korvane.h",
    "build/native/include/korvane/korvane.hpp": "include/korvane/korvane.hpp",
    "build/native/include/korvane/recording.hpp": "include/korvane/recording.hpp",
    "build/native/include/korvane/version.h": "include/korvane/version.h",
    "build/native/lib/korvane.lib": "lib/korvane.lib",
    "runtimes/win-x64/native/korvane.dll": "bin/korvane.dll",
}


# What the packages for npm and pip take from there, besides all of bindings/node and bindings/python.
BESIDE_BINDING = ("LICENSE.txt", "NOTICES.txt", "bin/korvane.dll", "bin/korvane.exe")
# What index.js exports beside the functions.
NODE_EXPORTS = ("CancelledError", "Code", "FailedError", "InvalidArgumentError", "KEY_CTRL_A", "KorvaneError", "Method",
                "NotFoundError", "Session", "Target", "TargetRecord", "Window", "withCancelMonitor", "withSession")


def project():
    """Version and description, from the one place where they are written."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    version, description = re.search(r'project\(korvane VERSION ([\d.]+) DESCRIPTION "([^"]+)"', text).groups()
    licence = re.match(r"SPDX-License-Identifier: (.+)\n", (ROOT / "LICENSE.txt").read_text(encoding="utf-8"))[1]
    major, minor, patch = version.split(".")
    return {"VERSION": version, "MAJOR": major, "MINOR": minor, "PATCH": patch, "DESCRIPTION": description,
            "LICENCE": licence, "NPMLICENCE": "UNLICENSED" if licence == "NONE" else licence,
            "EXPORTED": "\n".join(f"  {name}," for name in sorted([*NODE_EXPORTS, *(each.name for each in functions())]))}


def fill(template, values):
    return re.sub(r"@([A-Z]+)@", lambda match: values[match[1]], (TEMPLATES / template).read_text(encoding="utf-8"))


def put(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    if source.is_dir():
        shutil.copytree(source, target, copy_function=shutil.copyfile, ignore=shutil.ignore_patterns("__pycache__", "node_modules"))
    else:
        shutil.copyfile(source, target)


def assemble(folder, build, values):
    for target, source in SOURCES.items():
        put(ROOT / source, folder / target)
    for name in DOCUMENTS:
        put(ROOT / f"docs/{name}.md", folder / f"docs/{name}.md")
    for target, source in BUILT.items():
        put(build / source, folder / target)
    symbols = folder / "bin/korvane.pdb"
    symbols.write_bytes(pdb_file.without_chance(symbols.read_bytes()))
    for target, template in GENERATED.items():
        (folder / target).parent.mkdir(parents=True, exist_ok=True)
        (folder / target).write_text(fill(template, values), encoding="utf-8")
    for target, definition in IMPORT_LIBRARIES.items():
        subprocess.run([DLLTOOL, "-m", "i386:x86-64", "-d", ROOT / definition, "-l", folder / target], check=True)


def assemble_nuget(folder, package, values):
    for target, source in NUGET.items():
        put(package / source, folder / target)
    put(package / "bindings/csharp/README.md", folder / "README.md")
    put(TEMPLATES / "korvane.targets", folder / "build/native/korvane.targets")
    for place in ("build", "buildTransitive"):
        put(TEMPLATES / "korvane.framework.targets", folder / place / "net461/korvane.targets")
    library = folder / "lib/netstandard2.0"
    library.mkdir(parents=True)
    assembly.build((package / "bindings/csharp").glob("*.cs"), library / "Korvane.Net.dll")
    (folder / "korvane.nuspec").write_text(fill("korvane.nuspec.in", values), encoding="utf-8")


def write_npm(output, package):
    """npm itself packs, with its own fixed date."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(package / "bindings/node", folder, copy_function=shutil.copyfile, dirs_exist_ok=True)
        for name in BESIDE_BINDING:
            put(package / name, Path(folder) / Path(name).name)
        subprocess.run(["npm", "pack", "--silent", "--pack-destination", output.resolve()], cwd=folder, check=True,
                       stdout=subprocess.DEVNULL)


def write_wheel(output, package):
    """setuptools itself packs; pip is not asked, because it would look for setuptools elsewhere."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(package / "bindings/python", folder, copy_function=shutil.copyfile, dirs_exist_ok=True)
        for name in BESIDE_BINDING:
            place = "korvane" if name.startswith("bin/") else "."
            put(package / name, Path(folder) / place / Path(name).name)
        made = subprocess.run(
            ["/usr/bin/python3", "-c", "import setuptools; setuptools.setup()", "--quiet", "bdist_wheel", "--python-tag", "py3",
             "--plat-name", "win_amd64", "--dist-dir", output.resolve()],
            cwd=folder, env={**os.environ, "SOURCE_DATE_EPOCH": "315532800", "PYTHONDONTWRITEBYTECODE": "1"},
            capture_output=True, text=True, check=False,
        )
    # It talks about its own plans even when all is well.
    if made.returncode != 0:
        sys.exit(made.stdout + made.stderr)


def files(folder):
    return sorted((file for file in folder.rglob("*") if file.is_file()), key=lambda file: file.as_posix())


def write_sums(folder):
    lines = [
        f"{hashlib.sha256(file.read_bytes()).hexdigest()}  {file.relative_to(folder).as_posix()}\n"
        for file in files(folder)
    ]
    (folder / "SHA256SUMS").write_text("".join(lines), encoding="utf-8")


def add(archive, name, data, executable=False):
    entry = zipfile.ZipInfo(name, NO_DATE)
    entry.compress_type = zipfile.ZIP_DEFLATED
    entry.create_system = 3
    entry.external_attr = (0o100755 if executable else 0o100644) << 16
    archive.writestr(entry, data)


def write_zip(path, folder, top):
    with zipfile.ZipFile(path, "w") as archive:
        for file in files(folder):
            name = file.relative_to(folder).as_posix()
            add(archive, f"{top}/{name}", file.read_bytes(), executable=file.suffix == ".sh")


def write_nuget(path, folder):
    with zipfile.ZipFile(path, "w") as archive:
        add(archive, "[Content_Types].xml", (TEMPLATES / "content_types.xml").read_bytes())
        add(archive, "_rels/.rels", (TEMPLATES / "relationships.xml").read_bytes())
        for file in files(folder):
            add(archive, file.relative_to(folder).as_posix(), file.read_bytes())


def main():
    build, output = Path(sys.argv[1]), Path(sys.argv[2])
    # npm and setuptools write down how files may be used.
    os.umask(0o022)
    values = project()
    name = f"korvane-{values['VERSION']}-windows-x64"
    shutil.rmtree(output, ignore_errors=True)
    folder = output / name
    assemble(folder, build, values)
    write_sums(folder)
    write_zip(output / f"{name}.zip", folder, name)
    with tempfile.TemporaryDirectory() as wine:
        for target, source in WINE.items():
            put(ROOT / source, Path(wine) / target)
        for target, source in WINE_BUILT.items():
            put(build / source, Path(wine) / target)
        write_zip(output / f"korvane-{values['VERSION']}-wine.zip", Path(wine), name)
    with tempfile.TemporaryDirectory() as nuget:
        assemble_nuget(Path(nuget), folder, values)
        write_nuget(output / f"korvane.{values['VERSION']}.nupkg", Path(nuget))
    write_npm(output, folder)
    write_wheel(output, folder)
    for path in sorted(output.glob("*.*")):
        if path.is_file():
            print(f"  {path.relative_to(Path.cwd()) if path.is_relative_to(Path.cwd()) else path}"
                  f"  {path.stat().st_size} bytes, sha256 {hashlib.sha256(path.read_bytes()).hexdigest()}")


if __name__ == "__main__":
    main()

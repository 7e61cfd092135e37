"""What these checks share: the package as a user unpacks it, and its examples."""

import functools
import shutil
import zipfile

from repository import ROOT, SCRATCH, run_windows

OUTPUT = ROOT / "build/package"
STANDIN = ROOT / "build/native/bin/libkorvane.so"
NODE_PACKAGES = ROOT / "build/node/node_modules"
SUBMITTED = "Submitted: Ren{0}e Garc{1}a / Brass compass\n"


def archive():
    found = list(OUTPUT.glob("korvane-*-windows-x64.zip"))
    assert len(found) == 1, f"{len(found)} packages in {OUTPUT}; ./package makes one"
    return found[0]


@functools.lru_cache(maxsize=None)
def unpacked():
    """The package in a folder whose name has a blank, as a user's may."""
    folder = SCRATCH / "un packed"
    shutil.rmtree(folder, ignore_errors=True)
    with zipfile.ZipFile(archive()) as file:
        file.extractall(folder)
    (top,) = folder.iterdir()
    return top


def scratch(name):
    """An empty folder."""
    folder = SCRATCH / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def windows_path(path):
    """How Wine's programs know a path of this machine."""
    return "Z:" + str(path).replace("/", "\\")

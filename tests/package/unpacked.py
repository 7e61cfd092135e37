"""What these checks share: the package as a user unpacks it, and its examples."""

import functools
import shutil
import zipfile

from repository import ROOT, SCRATCH, run_windows

OUTPUT = ROOT / "build/package"
STANDIN = ROOT / "build/native/bin/libkorvane.so"
NODE_PACKAGES = ROOT / "build/node/node_modules"
SUBMITTED = "Submitted: Ren{0}e Garc{1}a / Brass compass\n"


def packed(pattern):
    """The one file of that name that ./package made."""
    found = list(OUTPUT.glob(pattern))
    assert len(found) == 1, f"{len(found)} of {pattern} in {OUTPUT}; ./package makes one"
    return found[0]


def archive():
    return packed("korvane-*-windows-x64.zip")


def wine_archive():
    return packed("korvane-*-wine.zip")


@functools.lru_cache(maxsize=None)
def unpacked():
    """The package, with what is for Wine, in a folder whose name has a blank, as a user's may."""
    folder = SCRATCH / "un packed"
    shutil.rmtree(folder, ignore_errors=True)
    for each in (archive(), wine_archive()):
        with zipfile.ZipFile(each) as file:
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


@functools.lru_cache(maxsize=None)
def demonstrated():
    """What the demonstration of the zip leaves, run under Wine: a recording, a log and a report."""
    folder = scratch("demonstrated")
    code, output = run_windows("cmd", "/c", windows_path(unpacked() / "demo.cmd"), "--no-report", folder=folder)
    assert code == 0, output
    shutil.move(unpacked() / "demo", folder / "demo")
    return folder / "demo"

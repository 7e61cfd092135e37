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


def run_order(*command, **options):
    """An example's order. On a busy machine Wine loses a click now and then, and the status stays "Ready" (code -3): that
    is Wine's own matter, and the order is placed once more."""
    code, output = run_windows(*command, **options)
    if code == 0 or not any(sign in output for sign in ("code -3", "failed", "FAILED")):
        return code, output
    print(f"    once more: {command[0]} answered {output.strip()[-80:]!r}")
    return run_windows(*command, **options)

"""What these checks share: the program in both worlds, and the recording that the sample's script makes."""

import functools
import os
import shutil
import subprocess

from repository import ROOT, SCRATCH

NATIVE = ROOT / "build/sanitize/bin/korvane"
WINDOWS = ROOT / "build/windows/bin"
SCRIPT = ROOT / "samples/session/order.steps.json"
VALUES = ("--set", "NAME=Ada Löwe", "--set", "ARTICLE=Brass compass")
CONFIRMATION = 'CONFIRMATION = "Submitted: Ada Löwe / Brass compass"'


def scratch(name):
    """An empty folder."""
    folder = SCRATCH / "host" / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def korvane(*words, folder, desktop="", **options):
    """Exit code and what was said, on the scripted desktop that `desktop` describes."""
    done = subprocess.run(
        [NATIVE, *map(str, words)], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, check=False, timeout=60,
        env={**os.environ, "KORVANE_DESKTOP": desktop}, **options,
    )
    return done.returncode, done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


@functools.lru_cache(maxsize=None)
def recorded():
    """The sample's recording, as text."""
    folder = scratch("recorded")
    code, out, err = korvane("record", "order.json", "--script", SCRIPT, folder=folder)
    assert code == 0, out + err
    return (folder / "order.json").read_text(encoding="utf-8")

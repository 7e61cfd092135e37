"""How the program behaves at a terminal, in a script and in Explorer."""

import fcntl
import json
import os
import pty
import re
import select
import signal
import subprocess
import termios
import unittest
import xml.etree.ElementTree as ElementTree

from program import NATIVE, VALUES, WINDOWS, korvane, recorded, scratch
from repository import run

SETTINGS = {
    "dpiAware": "true/pm", "dpiAwareness": "PerMonitorV2, PerMonitor", "longPathAware": "true", "activeCodePage": "UTF-8",
}


def take_terminal():
    """In a new program: its input is its terminal, whose Ctrl+C counts even when these checks run in the background."""
    fcntl.ioctl(0, termios.TIOCSCTTY, 0)
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Manners(unittest.TestCase):
    def setUp(self):
        self.folder = scratch("manners")
        (self.folder / "order.json").write_text(recorded(), encoding="utf-8")

    def test_words(self):
        """manners: a wrong word is told in one line, with the word that was meant; help and the version are at hand"""
        for words, line in (
            ((), "say what to do; `korvane help` tells what there is"),
            (("chek", "order.json"), '"chek" is no command; did you mean "check"?'),
            (("frobnicate",), '"frobnicate" is no command'),
            (("replay", "order.json", "--timout", "3"), '"--timout" is no option of replay; did you mean "--timeout"?'),
            (("--verson",), '"--verson" is no option; did you mean "--version"?'),
            (("replay", "order.json", "--timeout", "0"),
             "--timeout: Value 0 not in range 1 to 3600000; `korvane help replay` tells more"),
            (("capture", "--at", "1"), "--at: At least 2 required but received 1; `korvane help capture` tells more"),
            (("replay",), "FILE is required; `korvane help replay` tells more"),
            (("help", "repay"), '"repay" is no command; did you mean "replay"?'),
        ):
            with self.subTest(words):
                self.assertEqual((2, "", f"korvane: {line}\n"), korvane(*words, folder=self.folder))
        self.assertRegex(korvane("--version", folder=self.folder)[1], r"^korvane \d+\.\d+\.\d+\n$")
        self.assertEqual(korvane("replay", "--help", folder=self.folder), korvane("help", "replay", folder=self.folder))
        self.assertEqual(korvane("--help", folder=self.folder), korvane("help", folder=self.folder))

    def test_nobody_clicks(self):
        """manners: a window is not waited for where nobody can click it"""
        code, out, err = korvane("window", folder=self.folder)
        self.assertEqual((7, "", 1), (code, out, err.count("\n")), err)

    def at_terminal(self, kind, *words):
        """What a terminal of that kind is sent."""
        ours, theirs = pty.openpty()
        process = subprocess.Popen([NATIVE, *words], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=theirs, stderr=theirs,
                                   env={**os.environ, "KORVANE_DESKTOP": "", "TERM": kind})
        os.close(theirs)
        sent = b""
        while True:
            try:
                data = os.read(ours, 4096)
            except OSError:
                break
            if not data:
                break
            sent += data
        os.close(ours)
        self.assertEqual(0, process.wait(), sent)
        return sent.decode("utf-8")

    def test_terminal(self):
        """manners: a bar that moves only where lines can be written over, and no escape sequence elsewhere"""
        words = ("replay", "order.json", *VALUES)
        self.assertIn("\r\x1b[K", self.at_terminal("xterm", *words))
        for plain in (self.at_terminal("dumb", *words), korvane(*words, folder=self.folder)[1]):
            self.assertNotRegex(plain, r"\x1b|\r[^\n]|█")
            self.assertEqual(11, len(re.findall(r"^  \d+/11 +.* ok ", plain, re.M)), plain)

    def test_secret_is_asked_for(self):
        """manners: a secret without a value is asked for where there is a terminal, unseen, and not again for each row"""
        recording = json.loads(recorded())
        recording["steps"][1].update(text="${SECRET_1}", replace=True)
        (self.folder / "secret.json").write_text(json.dumps(recording), encoding="utf-8")
        (self.folder / "rows.csv").write_text("ARTICLE,NAME\nLamp,Ada\nRope,Ada\n", encoding="utf-8")
        words = ("replay", "secret.json", "--data", "rows.csv", "--dry-run")
        code, _, err = korvane(*words, folder=self.folder)
        self.assertEqual((2, True), (code, "SECRET_1" in err), err)
        for typed, expected in ("Lowe7pass\n", 0), ("Lowe\x03", 5), ("\x04", 5):
            ours, theirs = pty.openpty()
            process = subprocess.Popen([NATIVE, *words], cwd=self.folder, stdin=theirs, stdout=theirs, stderr=theirs,
                                       start_new_session=True, preexec_fn=take_terminal,
                                       env={**os.environ, "KORVANE_DESKTOP": "", "TERM": "dumb"})
            sent = b""
            while b"(is not shown): " not in sent:
                sent += os.read(ours, 4096)
            os.write(ours, typed.encode())
            while select.select([ours], [], [], 0)[0] or process.poll() is None:
                if select.select([ours], [], [], 0.05)[0]:
                    sent += os.read(ours, 4096)
            self.assertEqual(expected, process.returncode, sent)
            self.assertTrue(termios.tcgetattr(theirs)[3] & termios.ECHO)
            os.close(ours)
            os.close(theirs)
            self.assertNotIn(b"Lowe", sent)
            self.assertEqual(1, sent.count(b"(is not shown)"))

    def test_manifest(self):
        """manners: korvane.exe tells Windows of physical pixels, long paths and UTF-8, and Explorer its version"""
        program = WINDOWS / "korvane.exe"
        manifest = re.search(rb"<\?xml[^\0]*</assembly>", program.read_bytes(), re.S)[0]
        told = {element.tag.rpartition("}")[2]: element.text for element in ElementTree.fromstring(manifest).iter()}
        self.assertEqual(SETTINGS, {name: told.get(name) for name in SETTINGS})
        resources = run("x86_64-w64-mingw32-objdump", "-p", program).stdout
        # Types 16, a version, and 24, a manifest.
        for kind in ("000010", "000018"):
            self.assertRegex(resources, rf"Entry: ID: 0x{kind}")


if __name__ == "__main__":
    unittest.main()

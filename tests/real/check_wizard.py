"""An installer of the kind that most programs come in, and a message box in the middle of it."""

import subprocess
import unittest

from programs import HERE, program_at, replay, scratch, windows_path

LICENCE = "\n".join(f"{number}. Do what you like with it." for number in range(1, 61))


def make_wizard(folder):
    """The installer, as wizard.exe of the folder."""
    (folder / "licence.txt").write_text(LICENCE, encoding="ascii")
    made = subprocess.run(
        ["makensis", "-V2", "-XTarget amd64-unicode", f"-DOUT={folder}/wizard.exe",
         f"-DLICENCE={folder}/licence.txt", HERE / "wizard.nsi"],
        stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if made.returncode != 0:
        raise AssertionError(made.stdout)


class Wizard(unittest.TestCase):
    def test_installed(self):
        """installer: licence, components, folder and a message box, found again elsewhere: what was chosen is installed"""
        folder = scratch("wizard")
        make_wizard(folder)
        target = folder / "installed"
        with program_at("Sample Setup ", 140, 120, folder / "wizard.exe"):
            code, out = replay("wizard.json", FOLDER=windows_path(target))
            self.assertEqual(0, code, out)
        self.assertEqual(["help.txt", "note.txt", "program.txt"], sorted(file.name for file in target.iterdir()))


if __name__ == "__main__":
    unittest.main()

"""korvane: the companion program of this package."""

import subprocess
import sys
from pathlib import Path


def main() -> int:
    here = Path(__file__).resolve().parent
    for folder in (here, here.parents[2] / "bin"):
        if (folder / "korvane.exe").is_file():
            return subprocess.run([str(folder / "korvane.exe"), *sys.argv[1:]], check=False).returncode
    print("korvane: korvane.exe is not in the package", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())

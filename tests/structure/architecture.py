"""Fails when the table "To change X, open Y" of docs/architecture.md names a file that does not exist.

Usage: architecture.py ROOT
"""

import pathlib
import re
import sys


def main():
    root = pathlib.Path(sys.argv[1])
    rows = re.findall(r"^\|[^|]*\|([^|]*)\|([^|]*)\|$", (root / "docs/architecture.md").read_text(), re.MULTILINE)
    named = [path for row in rows for column in row for path in re.findall(r"`([\w/.-]+/[\w/.-]+)`", column)]
    missing = [path for path in named if not (root / path).exists() and not (root / "src/model" / path).exists()]
    print("\n".join(missing))
    return bool(missing) or not named


sys.exit(main())

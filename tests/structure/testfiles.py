"""Fails when a source of geometry, import or memory has no test file of its name.

Usage: testfiles.py ROOT
"""

import pathlib
import sys

ROOMS = ("geometry", "import", "memory")


def main():
    root = pathlib.Path(sys.argv[1])
    tests = {path.stem for path in (root / "tests").rglob("*_test.cpp")}
    sources = [path for room in ROOMS for path in sorted((root / "src/model" / room).rglob("*.cpp"))]
    missing = [str(path) for path in sources if path.stem + "_test" not in tests]
    print("\n".join(missing))
    return bool(missing) or not sources


sys.exit(main())

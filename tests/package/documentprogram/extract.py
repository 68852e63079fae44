"""Writes the one C++ program of a document, an example with a main function, to a file.

Usage: extract.py DOCUMENT SOURCE
"""

import pathlib
import re
import sys

document, source = map(pathlib.Path, sys.argv[1:])
blocks = re.findall(r"^```cpp\n(.*?)^```", document.read_text(), re.MULTILINE | re.DOTALL)
programs = [block for block in blocks if "int main(" in block]
if len(programs) != 1:
    sys.exit(f"{document} has {len(programs)} programs in place of one")
source.write_text(programs[0])

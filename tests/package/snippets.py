"""Fails when a C++ or GLSL snippet of the documents does not stand in a source that the build compiles.

Line breaks and indentation do not count. Whole programs are left out, because documentprogram/ builds them as they stand.
"""

import pathlib
import re
import sys


def folded(text):
    return re.sub(r"\s+", "", text)


def main(root):
    folders = ["examples", "tests", "tools", "velgl"]
    sources = [folded(path.read_text()) for folder in folders for path in sorted((root / folder).rglob("*.cpp"))]
    documents = [root / "README.md", *sorted((root / "docs").glob("*.md"))]
    found = 0
    failed = 0
    for document in documents:
        for block in re.findall(r"^```(?:cpp|glsl)\n(.*?)^```", document.read_text(), re.MULTILINE | re.DOTALL):
            found += 1
            if "int main(" in block:
                continue
            if not any(folded(block) in source for source in sources):
                failed += 1
                print(f"{document}: no compiled source holds this snippet:\n{block}")
    if found == 0:
        print("no snippet found: the documents or this check are broken")
    return 0 if found and not failed else 1


sys.exit(main(pathlib.Path(sys.argv[1])))

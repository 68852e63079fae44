"""Fails when a C++ snippet of the documents is not found, line for line, in a source that the build compiles."""

import pathlib
import re
import sys


def lines_of(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


def stands_in(snippet, source):
    return any(source[i : i + len(snippet)] == snippet for i in range(len(source) - len(snippet) + 1))


def main(root):
    folders = ["examples", "tests", "tools", "velgl"]
    sources = [lines_of(path.read_text()) for folder in folders for path in sorted((root / folder).rglob("*.cpp"))]
    documents = [root / "README.md", *sorted((root / "docs").glob("*.md"))]
    found = 0
    failed = 0
    for document in documents:
        for block in re.findall(r"^```cpp\n(.*?)^```", document.read_text(), re.MULTILINE | re.DOTALL):
            found += 1
            snippet = lines_of(block)
            if not any(stands_in(snippet, source) for source in sources):
                failed += 1
                print(f"{document}: no compiled source holds this snippet:\n{block}")
    if found == 0:
        print("no snippet found: the documents or this check are broken")
    return 0 if found and not failed else 1


sys.exit(main(pathlib.Path(sys.argv[1])))

"""Fails when a relative link or a picture of the documents leads to a file that is not there."""

import pathlib
import re
import sys


def main(root):
    documents = [*sorted(root.glob("*.md")), *sorted((root / "docs").glob("*.md"))]
    found = 0
    broken = []
    for document in documents:
        prose = re.sub(r"^```.*?^```", "", document.read_text(), flags=re.MULTILINE | re.DOTALL)
        for target in re.findall(r"\]\(([^)#\s]+)[^)]*\)", prose):
            if re.match(r"[a-z]+:", target):
                continue
            found += 1
            if not (document.parent / target).exists():
                broken.append(f"{document}: {target}")
    print("\n".join(broken))
    return 0 if found and not broken else 1


sys.exit(main(pathlib.Path(sys.argv[1])))

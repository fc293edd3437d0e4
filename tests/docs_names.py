#!/usr/bin/env python3
"""Holds the names in the documents to the exports: every name stands for one or more exports, where `...` is anything,
and every export stands in the index of operations.   docs_names.py SOURCE_DIR"""
import pathlib
import re
import sys

source = pathlib.Path(sys.argv[1])
exports = {name for path in source.glob("src/*/exports.txt") for name in path.read_text().split()}
pages = [*source.glob("*.md"), *source.glob("docs/*.md")]
faults = []
for page in pages:
    text = page.read_text()
    for name in set(re.findall(r"`(veki[A-Z][\w.]*)(?:\(\))?`", text)):
        pattern = re.escape(name).replace(re.escape("..."), r"\w*")
        if not any(re.fullmatch(pattern, export) for export in exports):
            faults.append(f"{page.name}: {name} is no export")
listed = set(re.findall(r"`(\w+)`", (source / "docs/operations.md").read_text()))
faults += [f"operations.md: {export} is missing" for export in sorted(exports - listed) if export.startswith("veki")]
print("\n".join(faults) or f"{len(exports)} exports, {len(pages)} pages")
sys.exit(bool(faults))

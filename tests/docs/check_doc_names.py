#!/usr/bin/env python3
"""Checks that every test, file and script the README and docs/*.md name in backticks, and every
file they link to, exists: a doc that names what is gone fails here, naming the doc, the line and
the name.

usage: check_doc_names.py SOURCE_DIR CTEST BUILD_DIR
"""
import glob
import json
import os
import re
import subprocess
import sys

source, ctest, build = sys.argv[1:4]
listing = subprocess.run([ctest, "--show-only=json-v1", "--test-dir", build], check=True,
                         capture_output=True, text=True).stdout
tests = {test["name"] for test in json.loads(listing)["tests"]}
suites = {name.split(".")[0] for name in tests}
top = {entry for entry in os.listdir(source) if not entry.startswith(".") and entry != "build"}
code = (".cpp", ".hpp", ".h", ".cmake", ".py", ".md", ".txt", ".json", ".sh", ".1", ".bash")
files = {name for folder, dirs, names in os.walk(source)
         if not os.path.relpath(folder, source).split(os.sep)[0] in ("build", ".git") for name in names}


def problem(name, doc_dir):
    """Why `name` resolves to nothing, or None when it resolves or is no name of ours."""
    if re.fullmatch(r"[A-Za-z]\w*\.([A-Z]\w*|\*)", name):
        suite, case = name.split(".")
        found = suite in suites if case == "*" else name in tests
        return None if found else "is no test of the suite (ctest --show-only lists none of that name)"
    path = re.sub(r":\d+(:\d+)?$", "", name.split(" ")[0])
    if re.match(r"(/|~|\.\./|-|\$|[a-z]+:)", path) or re.search(r"[<>{}$()\[\]]", path):
        return None
    parts = path.split("/")
    # include/ is also a folder of the installed tree; only the repository's own folders of it are ours.
    installed = parts[0] == "include" and len(parts) > 1 and parts[1] not in os.listdir(os.path.join(source, "include"))
    if "/" in path and parts[0] in top and not installed:
        found = glob.glob(os.path.join(source, path)) if "*" in path else os.path.exists(os.path.join(source, path))
        return None if found else "names no file or folder of the repository"
    if "/" not in path and " " not in name and path.endswith(code) and "*" not in path:
        found = path in files or os.path.exists(os.path.join(doc_dir, path))
        return None if found else "names no file of the repository"
    return None


failures = []
for doc in [os.path.join(source, "README.md")] + sorted(glob.glob(os.path.join(source, "docs", "*.md"))):
    fenced = False
    for number, line in enumerate(open(doc, encoding="utf-8"), 1):
        if line.lstrip().startswith("```"):
            fenced = not fenced
            continue
        if fenced:
            continue
        where = f"{os.path.relpath(doc, source)}:{number}"
        for name in re.findall(r"`([^`]+)`", line):
            why = problem(name.strip(), os.path.dirname(doc))
            if why:
                failures.append(f"{where}: `{name}` {why}")
        for target in re.findall(r"\]\(([^)#\s]+)", line):
            if not re.match(r"[a-z]+:", target) and not os.path.exists(os.path.join(os.path.dirname(doc), target)):
                failures.append(f"{where}: the link to {target} leads to no file")

print("\n".join(failures) if failures else "every name in the docs resolves")
sys.exit(1 if failures else 0)

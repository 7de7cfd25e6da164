#!/usr/bin/env python3
"""The JSON Schemas of exampledoc held against the tool itself.

The catalogue schema refuses a catalogue exactly when 'exampledoc check' reports an error that a
schema can express, over every catalogue of the repository and over variants of them (each
member removed, each value and array element given each JSON type); the schemas of list, check
and coverage describe what the tool prints, and its SARIF follows the SARIF schema; 'exampledoc
schema' prints the files as they are.

Usage: schema_test.py EXAMPLEDOC SOURCE_DIR
"""
import copy
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import zipfile

import jsonschema

TOOL, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])
SCHEMAS = SOURCE / "tools/exampledoc/schemas"
SAMPLE = SOURCE / "examples/docroot"
SARIF_SCHEMA = json.loads((SOURCE / "tests/data/sarif/sarif-schema-2.1.0.json").read_bytes())
# The tool reads the sample tree in English, whatever the environment says.
ENVIRONMENT = {k: v for k, v in os.environ.items()
               if k not in ("ZW_DOC_ROOT", "LC_ALL", "LC_MESSAGES", "LANG")}
# Findings about the text itself, which a schema never sees: it sees only parsed JSON.
TEXT_RULES = {"unreadable", "byte-order-mark", "not-utf8", "json-syntax", "too-deep"}
# Every JSON type, each one a wrong type somewhere.
VALUES = [None, False, 0, 0.5, "", [], {}, [0], {"": 0}]
# Every member, and one unknown member in each object: the library reads past those.
LINK = {"docid": "d", "target": "t", "x": 0}
ENTRY = {"name": "n", "component": "c", "title": "t", "description": None, "thumbnail": "", "x": 0,
         "exampleType": "Live Script", "openCmd": "o", "relative_path": ["r"],
         "supporting_files": ["s"], "docid_links": [LINK]}
FULL = {"$schema": "catalogue.schema.json", "header": {"product": "p", "version": "v",
        "helpFolder": "h", "locale": "en_US", "x": 0}, "exampleItems": [ENTRY]}


def schema(name):
    return json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))


def validator(name):
    return jsonschema.Draft202012Validator(schema(name))


def tool(*args, status=(0,)):
    run = subprocess.run([TOOL, *args], capture_output=True, env=ENVIRONMENT)
    assert run.returncode in status, (args, run.returncode, run.stderr)
    return run.stdout


def variants(value):
    """The value with one member or element taken away or replaced by each of VALUES."""
    yield from VALUES
    items = (value.items() if isinstance(value, dict)
             else enumerate(value) if isinstance(value, list) else [])
    for key, member in items:
        for changed in [...] + VALUES + list(variants(member)):
            variant = copy.deepcopy(value)
            if changed is ...:
                del variant[key]
            else:
                variant[key] = changed
            yield variant


def refuse(constant):
    raise ValueError(f"{constant} is no JSON")


def corpus():
    """Every text of the repository's corpora that is JSON to Python, loose or in a package."""
    for path in sorted(p for d in ("examples", "tests/data", "fuzz") for p in (SOURCE / d).rglob("*")):
        texts = [path.read_bytes()] if path.is_file() else []
        if zipfile.is_zipfile(path):
            try:
                with zipfile.ZipFile(path) as package:
                    texts = [package.open(n).read(1 << 20)
                             for n in package.namelist() if n.endswith(".json")]
            except Exception:  # a hostile or broken package: its catalogues are checked elsewhere
                texts = []
        for text in texts:
            try:
                yield json.loads(text.decode("utf-8"), parse_constant=refuse)
            except (ValueError, TypeError):
                pass


def check_tree(texts):
    """Check's report on a tree holding each text as an English catalogue of its own; its SARIF
    log follows the SARIF schema."""
    with tempfile.TemporaryDirectory() as root:
        for index, text in enumerate(texts):
            folder = pathlib.Path(root, "docCatalog/exampleapi", f"f{index}")
            folder.mkdir(parents=True)
            (folder / "c.json").write_text(text, encoding="utf-8")
        report = json.loads(tool("check", "--root", root, "--format", "json", status=(0, 1)))
        sarif = json.loads(tool("check", "--root", root, "--format", "sarif", status=(0, 1)))
    validator("check").validate(report)
    jsonschema.validate(sarif, SARIF_SCHEMA)
    return report


def test_catalogue_schema_agrees_with_check():
    documents = [FULL] + list(variants(FULL)) + list(corpus())
    documents += [v for d in SAMPLE.rglob("*.json") for v in variants(json.loads(d.read_text("utf-8")))]
    texts = list(dict.fromkeys(json.dumps(d, ensure_ascii=False) for d in documents))
    report = check_tree(texts)
    errors = {f["file"]: f["errors"] > 0 for f in report["files"]}
    unexpressed = {f["file"] for f in report["findings"] if f["rule"] in TEXT_RULES}
    catalogue = validator("catalogue")
    disagreements = [(text, errors[file]) for index, text in enumerate(texts)
                     if (file := f"f{index}/c.json") not in unexpressed
                     and errors[file] == catalogue.is_valid(json.loads(text))]
    assert not disagreements, "\n".join(f"check errors={e}: {t}" for t, e in disagreements[:20])
    assert len(texts) - len(unexpressed) > 1000, len(texts)
    assert not [f for f in report["findings"] if f["file"] == "f0/c.json"], "FULL is a clean catalogue"
    said = {f["rule"] for f in report["findings"]}
    assert {"missing-member", "wrong-type", "unknown-kind"} <= said, said


def test_output_schemas_describe_the_output():
    for locale in ("en_US", "ja_JP", "ko_KR", "zh_CN"):
        validator("list").validate(json.loads(tool("list", "--json", "--locale", locale)))
    validator("coverage").validate(json.loads(tool("coverage", "--format", "json")))
    validator("check").validate(json.loads(tool("check", "--format", "json")))
    for name in ("check", "coverage", "list"):
        for golden in (SOURCE / "tests/data/exampledoc").glob(f"{name}*.json"):
            validator(name).validate(json.loads(golden.read_text(encoding="utf-8")))
    jsonschema.validate(json.loads((SOURCE / "tests/data/exampledoc/check.sarif").read_bytes()), SARIF_SCHEMA)


def test_schema_prints_the_installed_files():
    names = ("catalogue", "list", "check", "coverage")
    for args, name in [((), "catalogue")] + [(("--of", n), n) for n in names]:
        assert tool("schema", *args) == (SCHEMAS / f"{name}.schema.json").read_bytes(), name
        jsonschema.Draft202012Validator.check_schema(schema(name))
    tool("schema", "--of", "show", status=(2,))


if __name__ == "__main__":
    for test in [v for k, v in list(globals().items()) if k.startswith("test_")]:
        test()
        print("passed", test.__name__)

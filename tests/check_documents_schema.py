#!/usr/bin/env python3
"""Holds the JSON documents of the program against docs/seamrevise.schema.json.

check_documents_schema.py PROGRAM SCHEMA DIRECTORY

Exits with 77, and says so, where jsonschema is not installed.
"""
import json
import os
import subprocess
import sys

try:
    import jsonschema
except ImportError:
    print(f"not run: {sys.executable} has no jsonschema; install python3-jsonschema")
    sys.exit(77)

program, schema_path, directory = sys.argv[1:]
os.makedirs(directory, exist_ok=True)
wall = os.path.join(directory, "wall.db")
out = os.path.join(directory, "out")


def run(code, *words):
    result = subprocess.run([program, *words], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if result.returncode != code:
        sys.exit(f"{' '.join(words)} ended with {result.returncode} instead of {code}")
    return result.stdout


with open(schema_path, encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)

document = ["--json", "-"]
commands = [
    (0, ["simulate", wall, "--size", "101x62", "--grid", "3x2", "--band", "6x5",
         "--uncorrected", "5", "--layers", "2", "--force"]),
    (0, ["revise", wall, "-o", out, "--force"]),
    (0, ["revise", wall, "-o", out, "--force", "--table", "--layers", "2"]),
    (0, ["revise", wall, "-o", out, "--force", "--band", "0x0", "--dry-run"]),
    (1, ["revise", wall, "-o", out, "--force", "--step-limit", "0.0001%"]),
    (3, ["revise", wall, "-o", out, "--force", "--band", "9x9"]),
    (1, ["check", wall, "--margin", "6"]),
    (1, ["check", wall, "--band", "9x9"]),
    (1, ["check", wall, "--layers", "3"]),
    (0, ["info", wall]),
    (0, ["verify", out]),
    (0, ["show", out, "1"]),
    (0, ["upgrade", wall]),
]
for code, words in commands:
    text = run(code, *words, *document)
    errors = [f"{'/'.join(map(str, error.path))}: {error.message}"
              for error in validator.iter_errors(json.loads(text))]
    if errors:
        sys.exit(f"{' '.join(words)}:\n    " + "\n    ".join(errors))

# A schema that takes everything would say the same.
broken = json.loads(run(0, "revise", wall, "-o", out, "--force", *document))
del broken["seams"][0]["step"]
broken["changes"]["mean"] = "much"
broken["findings"].append({"kind": "x"})
if len(list(validator.iter_errors(broken))) < 5:
    sys.exit("the schema does not see what is missing or wrong")
print(f"{len(commands)} documents follow the schema")

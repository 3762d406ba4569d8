#!/usr/bin/env python3
"""Turns `velloru duplicates --json` output into the blank-line list jdupes and fdupes print (one path a
line, sets separated by a blank line), so dupcount.py can read it.

usage: sets-from-json.py VELLORU_JSON > LIST
"""
import json
import sys

with open(sys.argv[1], encoding="utf-8", errors="surrogateescape") as f:
    report = json.load(f)
for duplicate_set in report["sets"]:
    for member in duplicate_set["members"]:
        print(member["path"])
    print()

#!/usr/bin/env python3
"""Keeps the sets of a make-tree.py truth file whose files are at least MIN_SIZE bytes long.

usage: filter-truth.py TRUTH MIN_SIZE > FILTERED
"""
import os
import sys

truth, minimum = sys.argv[1], int(sys.argv[2])
with open(truth, encoding="utf-8", errors="surrogateescape") as f:
    lines = [line.rstrip("\n") for line in f if not line.startswith("#")]
sets, current = [], []
for line in lines + [""]:
    if line:
        current.append(line)
    elif current:
        sets.append(current)
        current = []
for paths in sets:
    if os.lstat(paths[0]).st_size >= minimum:
        print("\n".join(paths))
        print()

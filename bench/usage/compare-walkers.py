#!/usr/bin/env python3
"""Measures `velloru usage` against du, gdu and ncdu on the same folders in one run.

Every tool reads every folder once with a warm page cache: one warm-up run each, then ROUNDS rounds in
which the tools take turns, so a change in the machine's load touches all of them alike. The table gives
the median wall time, processor time (user + system) and peak memory (from /usr/bin/time -v) of each tool
on each folder, and checks that velloru's total equals `du -s -B1` (allocated bytes, hard links counted
once). On a busy machine the wall times say little about a parallel walker; the processor times still
compare the work each tool does.

Usage: compare-walkers.py [--velloru PATH] [--rounds N] FOLDER...
"""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def tools(velloru):
    return [
        ("velloru usage", lambda folder: [velloru, "usage", folder]),
        ("du -s", lambda folder: ["du", "-s", folder]),
        ("gdu -n -s", lambda folder: ["gdu", "-n", "-s", folder]),
        ("ncdu -0 -o /dev/null", lambda folder: ["ncdu", "-0", "-o", "/dev/null", folder]),
    ]


def timed(command):
    """Wall seconds, processor seconds (user + system) and peak resident KiB of one run of `command`."""
    result = subprocess.run(["/usr/bin/time", "-v"] + command, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True)
    report = result.stderr
    clock = re.search(r"Elapsed \(wall clock\) time \(h:mm:ss or m:ss\): (?:(\d+):)?(\d+):([\d.]+)", report)
    memory = re.search(r"Maximum resident set size \(kbytes\): (\d+)", report)
    user = re.search(r"User time \(seconds\): ([\d.]+)", report)
    system = re.search(r"System time \(seconds\): ([\d.]+)", report)
    if not clock or not memory or not user or not system:
        sys.exit(f"could not read the timing of {' '.join(command)}:\n{report}")
    hours, minutes, seconds = clock.groups()
    wall = int(hours or 0) * 3600 + int(minutes) * 60 + float(seconds)
    return wall, float(user.group(1)) + float(system.group(1)), int(memory.group(1))


def totals_agree(velloru, folder):
    ours = json.loads(subprocess.run([velloru, "usage", folder, "--json"], capture_output=True, text=True,
                                     check=True).stdout)["total"]
    theirs = int(subprocess.run(["du", "-s", "-B1", folder], capture_output=True, text=True).stdout.split()[0])
    return ours, theirs


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--velloru", default=os.path.join(ROOT, "build", "velloru"))
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("folders", nargs="+")
    options = parser.parse_args()

    rows = []
    for folder in options.folders:
        commands = tools(options.velloru)
        for _, command in commands:  # warm the page cache and the dentry cache
            timed(command(folder))
        samples = {name: [] for name, _ in commands}
        for _ in range(options.rounds):
            for name, command in commands:
                samples[name].append(timed(command(folder)))
        ours, theirs = totals_agree(options.velloru, folder)
        du_wall = statistics.median(wall for wall, _, _ in samples["du -s"])
        for name, _ in commands:
            wall = statistics.median(wall for wall, _, _ in samples[name])
            cpu = statistics.median(cpu for _, cpu, _ in samples[name])
            memory = statistics.median(kib for _, _, kib in samples[name])
            rows.append((folder, name, wall, cpu, memory / 1024, du_wall / wall))
        verdict = "equal" if ours == theirs else "DIFFERENT"
        rows.append((folder, f"velloru total {ours} vs du -s -B1 {theirs}: {verdict}", None, None, None, None))

    load = os.getloadavg()[0]
    print(f"{os.cpu_count()} processors, load average {load:.2f} at the end, median of {options.rounds} rounds\n")
    print("| folder | tool | wall time | processor time | peak memory | speed vs du -s |")
    print("|---|---|---|---|---|---|")
    for folder, name, wall, cpu, memory, speed in rows:
        if wall is None:
            print(f"| {folder} | {name} | | | | |")
        else:
            print(f"| {folder} | {name} | {wall:.2f} s | {cpu:.2f} s | {memory:.1f} MiB | {speed:.2f}× |")


if __name__ == "__main__":
    main()

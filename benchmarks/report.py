#!/usr/bin/env python3
"""Runs the benchmark programs of a build and prints one table: case, ours, floor, ratio, target."""
import argparse
import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path


def time_rows(programs, iterations):
    output = subprocess.run([programs / "orvane-bench-time", "--benchmark_format=json", f"--turns={iterations}"],
                            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    for case in json.loads(output)["benchmarks"]:
        name = case["name"].split("/iterations")[0]
        yield {"name": name, "ours": case["ours_us"], "floor": case["floor_us"],
               "ratio": case["ours_us"] / case["floor_us"], "target": case["target"], "unit": "us"}


def heap_rows(programs):
    output = subprocess.run([programs / "orvane-bench-heap"], check=True, stdout=subprocess.PIPE, text=True).stdout
    for line in output.splitlines():
        yield json.loads(line)


def network_rows(programs, turns):
    output = subprocess.run([programs / "orvane-bench-network", f"--turns={turns}"], check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    for line in output.splitlines():
        yield json.loads(line)


def idle_rows(programs, time_scale):
    output = subprocess.run([sys.executable, "-B", Path(__file__).parent / "idle.py", "--programs", programs,
                             "--time-scale", str(time_scale)], check=True, stdout=subprocess.PIPE, text=True).stdout
    yield json.loads(output)


def instructions(programs, case, side, turns, program="orvane-bench-once"):
    with tempfile.NamedTemporaryFile() as profile:
        done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile.name}",
                               "--toggle-collect=measured(*", programs / program, str(case), side,
                               str(turns)], check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", done.stderr).group(1)) / turns


def instruction_rows(programs, rows):
    turns = 5
    for case, row in enumerate(rows):
        ours, floor = (instructions(programs, case, side, turns) for side in ("ours", "floor"))
        yield {"name": row["name"], "ours": ours, "floor": floor, "ratio": ours / floor, "target": row["target"],
               "unit": "instructions"}


def log_rows(programs, rows):
    """What the log calls cost while they are off: the same work by a service that has none."""
    turns = 5
    for case, row in enumerate(rows):
        ours = instructions(programs, case, "ours", turns)
        floor = instructions(programs, case, "ours", turns, "orvane-bench-once-without-log")
        yield {"name": f"log calls off: {row['name']}", "ours": ours, "floor": floor, "ratio": ours / floor,
               "target": 1.02, "unit": "instructions"}


def table(rows):
    line = "{:<56} {:>13} {:>13} {:>7} {:>7}  {:<13} {}"
    yield line.format("case", "ours", "floor", "ratio", "target", "unit", "").rstrip()
    for row in rows:
        verdict = "" if row["ratio"] <= row["target"] else "missed"
        yield line.format(row["name"], f"{row['ours']:,.1f}", f"{row['floor']:,.1f}", f"{row['ratio']:.2f}",
                          f"{row['target']:.2f}", row["unit"], verdict).rstrip()


def main():
    parser = argparse.ArgumentParser(prog="bench", description=__doc__)
    parser.add_argument("--json", action="store_true", help="print one JSON array instead of a table")
    parser.add_argument("--quick", action="store_true", help="a few turns only: whether all of it runs")
    parser.add_argument("--instructions", action="store_true", help="count instructions as well, with valgrind")
    parser.add_argument("--programs", type=Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()

    try:
        rows = list(time_rows(options.programs, 10 if options.quick else 1000))
        if options.instructions:
            timed = list(rows)
            rows += list(instruction_rows(options.programs, timed))
            rows += list(log_rows(options.programs, timed))
        rows += list(network_rows(options.programs, 10 if options.quick else 1000))
        rows += list(idle_rows(options.programs, 60 if options.quick else 10))
        heap = list(heap_rows(options.programs))
        rows += heap
    except (OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"bench: {error}")
    print(json.dumps(rows, indent=2) if options.json else "\n".join(table(rows)))
    # Times depend on the machine; what the service takes from the heap does not.
    if options.quick and any(row["ratio"] > row["target"] for row in heap):
        sys.exit("bench: more heap than the target allows")


if __name__ == "__main__":
    main()

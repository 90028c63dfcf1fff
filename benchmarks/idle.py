#!/usr/bin/env python3
"""How often an idle telephone with an open channel wakes up in ten of its minutes, against the timers and pings due.

    benchmarks/idle.py --programs DIR [--time-scale FACTOR]

A moment in which any thread of the telephone ran is one wake-up, however many threads took part. Prints one JSON object.
"""
import argparse
import json
import os
import re
import sys
import tempfile
import time
from pathlib import Path

PHONE_SECONDS = 600
PING_SECONDS = 30
SAMPLE_SECONDS = 0.02


def switches(pid):
    """How often the telephone's threads gave up a processor by themselves, which they do at the end of each piece of work."""
    total = 0
    for task in Path(f"/proc/{pid}/task").iterdir():
        try:
            total += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", (task / "status").read_text(), re.M).group(1))
        except OSError:
            pass  # it has ended meanwhile
    return total


def moments_awake(pid, seconds):
    """Runs of samples in which something ran; one run is one moment."""
    moments, awake = 0, False
    last = switches(pid)
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        time.sleep(SAMPLE_SECONDS)
        now = switches(pid)
        moments += now != last and not awake
        awake, last = now != last, now
    return moments


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", required=True)
    parser.add_argument("--time-scale", type=float, default=10)
    options = parser.parse_args()
    os.environ["ORVANE_BIN_DIR"] = options.programs
    sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests/system"))
    sys.dont_write_bytecode = True
    from orvane_cloud import Cloud  # pylint: disable=import-outside-toplevel
    from orvane_system import EVERYTHING_ON, MAC, MODEL, Program, wait_until

    with tempfile.TemporaryDirectory(prefix="orvane-idle-") as directory:
        cloud = Cloud(directory, (MODEL, MAC), calls=20, contacts=20)
        arguments = [f"{options.programs}/orvane-phone", "--json", "--control", f"{directory}/control.sock",
                     "--server", cloud.url, "--ca", cloud.ca, "--model", MODEL, "--mac", MAC, "--log-level", "6",
                     "--time-scale", options.time_scale]
        for name, value in {**EVERYTHING_ON, "ORVANE_API_SYNC_INTERVAL": "60"}.items():
            arguments += ["--set", f"{name}={value}"]
        phone = Program(arguments, directory, "phone")
        try:
            wait_until(lambda: any(session["subscriptions"] for session in cloud.admin("GET", "sessions")), 20,
                       "the subscription")
            time.sleep(1)
            before = phone.errors().count(" timerEvent(")
            moments = moments_awake(phone.process.pid, PHONE_SECONDS / options.time_scale)
            timers = phone.errors().count(" timerEvent(") - before
        finally:
            phone.stop()
            cloud.program.stop()
    due = timers + PHONE_SECONDS // PING_SECONDS
    print(json.dumps({"name": "idle telephone, 10 minutes: moments awake by what was due", "ours": moments, "floor": due,
                      "ratio": moments / due, "target": 1, "unit": "count"}))


if __name__ == "__main__":
    main()

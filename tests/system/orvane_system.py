"""Runs the simulator, the telephone and its control program as processes, and reads what they say.

Everything is on loopback with ports that the system gives. The programs are looked for in ORVANE_BIN_DIR.
"""

import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest
import urllib.error
import urllib.request
from pathlib import Path

BIN_DIR = Path(os.environ.get("ORVANE_BIN_DIR", Path(__file__).resolve().parents[2] / "build/debug/bin"))
# Sanitizer builds are several times slower; the waits are bounds, not delays.
PATIENCE = float(os.environ.get("ORVANE_PATIENCE", "1"))

MODEL = "KD24"
MAC = "0011AABBCC01"
EVERYTHING_ON = {
    "ORVANE_API_SYNC_CALL_LOG": "true",
    "ORVANE_API_SYNC_PHONEBOOK": "true",
    "ORVANE_API_SYNC_DND": "true",
    "ORVANE_API_SYNC_INTERVAL": "30",
}


class LineReader:
    """Collects the lines of a stream on a thread of its own and lets tests wait for the one they need."""

    def __init__(self, stream, parse):
        self._condition = threading.Condition()
        self.lines = []
        self.ended = False
        self._thread = threading.Thread(target=self._read, args=(stream, parse), daemon=True)
        self._thread.start()

    def _read(self, stream, parse):
        for raw in stream:
            line = raw.rstrip("\n")
            with self._condition:
                self.lines.append(parse(line))
                self._condition.notify_all()
        with self._condition:
            self.ended = True
            self._condition.notify_all()
        stream.close()

    def mark(self):
        with self._condition:
            return len(self.lines)

    def since(self, mark=0):
        with self._condition:
            return self.lines[mark:]

    def wait_for(self, accept, timeout=15.0, after=0, what="the expected line"):
        """The first line from `after` on that `accept` takes, with the position behind it."""
        deadline = time.monotonic() + timeout * PATIENCE
        position = after
        with self._condition:
            while True:
                while position < len(self.lines):
                    line = self.lines[position]
                    position += 1
                    if accept(line):
                        return line, position
                remaining = deadline - time.monotonic()
                if self.ended or remaining <= 0:
                    tail = "\n".join(str(line)[:300] for line in self.lines[-15:])
                    reason = "the program ended" if self.ended else f"{timeout} s are over"
                    raise AssertionError(f"{what} did not come ({reason}); last lines:\n{tail}")
                self._condition.wait(remaining)


class Program:
    """One running program with its standard output read line by line, and its standard error in a file."""

    def __init__(self, arguments, directory, name, parse=json.loads):
        self.error_path = Path(directory) / f"{name}-{time.monotonic_ns()}.log"
        with open(self.error_path, "w") as errors:
            self.process = subprocess.Popen(
                [str(argument) for argument in arguments],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors,
                text=True, encoding="utf-8", errors="surrogateescape")
        self.output = LineReader(self.process.stdout, parse)

    def errors(self):
        return self.error_path.read_text(encoding="utf-8", errors="replace")

    def wait_for_error_line(self, pattern, timeout=15.0):
        return wait_until(lambda: re.search(pattern, self.errors()), timeout, f"log line {pattern}")

    def wait_for_end(self, timeout=15.0):
        return self.process.wait(timeout * PATIENCE)

    def stop(self, timeout=5.0):
        """Ends the program with SIGTERM; the exit status tells whether it came down by itself."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            return self.process.wait(timeout * PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise AssertionError(f"did not end on SIGTERM:\n{self.errors()[-2000:]}") from None

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()


def wait_until(condition, timeout=15.0, what="the condition"):
    deadline = time.monotonic() + timeout * PATIENCE
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"{what} did not come about within {timeout} s")
        time.sleep(0.02)


def run(arguments, timeout=30.0):
    """Runs a program to its end."""
    return subprocess.run([str(argument) for argument in arguments], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, timeout=timeout * PATIENCE, check=False)


def http(method, url, body=None, timeout=10.0):
    data = None if body is None else json.dumps(body).encode()
    request = urllib.request.Request(url, data=data, method=method, headers={"Content-Type": "application/json"})
    with urllib.request.urlopen(request, timeout=timeout * PATIENCE) as answer:
        text = answer.read().decode()
    return json.loads(text) if text else None

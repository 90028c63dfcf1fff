"""Signals to a telephone that is blocked: nobody reads what it prints, or a file that it wants to open has no other end."""

import contextlib
import fcntl
import os
import signal
import struct
import subprocess
import termios
import time
import unittest

from orvane_system import BIN_DIR, PATIENCE, run, wait_until
from telephone_case import TelephoneCase, make_authority

CONTROL_S = b"\x13"


def read_until(descriptor, text):
    """Reads what the telephone prints up to that text."""
    printed = b""
    while text not in printed:
        part = os.read(descriptor, 65536)
        if not part:
            raise AssertionError(f"the telephone has closed its output behind {printed!r}")
        printed += part


def fill(pipe):
    """Writes into a pipe until it takes no more; the telephone's own end of it stays as it is."""
    writer = os.open(f"/proc/self/fd/{pipe}", os.O_WRONLY | os.O_NONBLOCK)
    with contextlib.suppress(BlockingIOError):
        while True:
            os.write(writer, b"x" * 4096)
    with contextlib.suppress(BlockingIOError):
        while True:
            os.write(writer, b"x")
    os.close(writer)


def awaits_signals(process):
    """Whether a signal no longer ends the process by the system's own doing."""
    with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
        blocked = next(line.split()[1] for line in status if line.startswith("SigBlk:"))
    return int(blocked, 16) & 1 << signal.SIGINT - 1


class BlockedEnds(TelephoneCase):
    def setUp(self):
        super().setUp()
        self.ca = make_authority(self.directory)
        self.processes = {}

    def tearDown(self):
        for process in self.processes.values():
            process.kill()
            process.wait()
        super().tearDown()

    def start(self, name, *arguments, ca=None, output=subprocess.DEVNULL):
        with open(self.errors(name), "wb") as errors:
            self.processes[name] = subprocess.Popen(
                [BIN_DIR / "orvane-phone", "--ca", ca or self.ca, "--model", "KD24", "--mac", "1", "--control", self.control(name),
                 *arguments], stdin=subprocess.DEVNULL, stdout=output, stderr=errors)

    def control(self, name):
        return f"{self.directory}/{name}.sock"

    def errors(self, name):
        return f"{self.directory}/{name}.err"

    def ctl(self, name, *arguments):
        return run([BIN_DIR / "orvane-ctl", "--control", self.control(name), *arguments])

    def start_into_a_pipe(self, name, *arguments):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        self.start(name, *arguments, output=writer)
        read_until(reader, b"ready")
        self.assertEqual(0, self.ctl(name, "status").returncode)  # it has started, and printed what it had to say
        fill(writer)

    def start_on_a_terminal(self, name):
        master, terminal = os.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, terminal)
        self.start(name, output=terminal)
        read_until(master, b"ready")
        self.assertEqual(0, self.ctl(name, "status").returncode)
        os.write(master, CONTROL_S)
        # It looks at the size by itself, and draws anew.
        fcntl.ioctl(master, termios.TIOCSWINSZ, struct.pack("HHHH", 40, 100, 0, 0))

    def signal_all(self):
        """Sends them SIGINT; their exit statuses by name."""
        begin = time.monotonic()
        for process in self.processes.values():
            process.send_signal(signal.SIGINT)
        statuses = {name: process.wait(10 * PATIENCE) for name, process in self.processes.items()}
        self.assertLess(time.monotonic() - begin, 2.5 * PATIENCE)
        return statuses

    def test_a_telephone_whose_output_nobody_reads_says_so_and_ends_in_time(self):
        self.start_into_a_pipe("json", "--json")
        self.start_into_a_pipe("blocked", "--json")
        self.start_into_a_pipe("view")
        self.start_on_a_terminal("terminal")
        for name in ("blocked", "view"):
            # The service reports this one, and is held up.
            self.assertEqual(1, self.ctl(name, "--timeout", "0.3", "reset-user-data").returncode)

        self.assertEqual(dict.fromkeys(self.processes, 1), self.signal_all())

        for name, reason in (("json", "nobody takes the output"), ("terminal", "nobody takes the output"),
                             ("blocked", "the service does not come down")):
            with open(self.errors(name), encoding="utf-8") as errors:
                self.assertEqual(f"orvane-phone: {reason}", errors.read().rstrip("\n"), name)

    def test_a_file_without_another_end_is_left_at_once(self):
        authorities, log = f"{self.directory}/authorities", f"{self.directory}/log"
        os.mkfifo(authorities)
        os.mkfifo(log)
        self.start("authorities", ca=authorities)
        self.start("log", "--log-file", log)
        for process in self.processes.values():
            wait_until(lambda process=process: awaits_signals(process), what="the watch for signals")

        self.assertEqual({"authorities": 0, "log": 0}, self.signal_all())


if __name__ == "__main__":
    unittest.main()

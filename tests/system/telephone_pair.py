"""A telephone of its own cloud, whose time runs so fast that every synchronisation comes within seconds."""

import os
import time
from pathlib import Path

from mirror import Mirror
from orvane_cloud import Cloud
from orvane_system import BIN_DIR, EVERYTHING_ON, MAC, MODEL, PATIENCE, Program, run

OWN, LINE = 1001, 2001
TIME_SCALE = 60
# A new login, which reads everything again, about every 3 s of the telephone's time.
SETTINGS = {"tokenLifetimeSeconds": 180}


def process_figures(pid):
    """Resident memory in KiB, threads by name, and open descriptors."""
    status = Path(f"/proc/{pid}/status").read_text()
    resident = int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])
    threads = []
    for task in Path(f"/proc/{pid}/task").iterdir():
        try:
            threads.append((task / "comm").read_text().strip())
        except OSError:
            pass  # it has ended meanwhile
    return resident, sorted(threads), len(os.listdir(f"/proc/{pid}/fd"))


class Pair:
    def __init__(self, directory, calls=12, contacts=60, log_level=2):
        Path(directory).mkdir(parents=True, exist_ok=True)
        call = {"direction": "Inbound", "result": "Missed", "from": {"phoneNumber": "+49301", "name": "Anna"},
                "to": {"phoneNumber": "+49302", "name": "Line"}}
        data = {"accountId": 1, "settings": SETTINGS, "devices": [{"model": MODEL, "mac": MAC, "extensionId": OWN}],
                "extensions": [
                    {"id": OWN, "number": "100", "name": "User", "grants": [LINE],
                     "calls": [{**call, "id": f"own{number}", "telephonySessionId": f"s{number}"} for number in range(calls)],
                     "contacts": [{"firstName": f"F{number}", "lastName": f"L{number}"} for number in range(contacts)]},
                    {"id": LINE, "number": "200", "name": "Sales",
                     "calls": [{**call, "id": "line1", "telephonySessionId": "l1"}]}]}
        self.cloud = Cloud(directory, (MODEL, MAC), data=data)
        self.directory = directory
        self.control = f"{directory}/control.sock"
        self.log_level = log_level
        self.start_phone()

    def start_phone(self):
        """Also after the telephone has ended, as a restart would."""
        arguments = [BIN_DIR / "orvane-phone", "--json", "--control", self.control, "--server", self.cloud.url,
                     "--ca", self.cloud.ca, "--model", MODEL, "--mac", MAC, "--log-level", self.log_level,
                     "--time-scale", TIME_SCALE]
        for name, value in EVERYTHING_ON.items():
            arguments += ["--set", f"{name}={value}"]
        self.phone = Program(arguments, self.directory, "phone")
        self.mirror = Mirror(self.phone.output)
        self.pid = self.phone.process.pid
        self.phone.output.wait_for(lambda line: line.get("event") == "ready", what="the ready line")

    def ctl(self, *arguments, timeout=45.0):
        return run([BIN_DIR / "orvane-ctl", "--control", self.control, *arguments], timeout)

    def alive(self):
        return self.phone.process.poll() is None

    def show_line(self):
        """The overview key of the shared line, which the telephone repeats whenever its devices change."""
        self.ctl("overview", "+49200@sip.example", "Sales")

    def wait_until_equal(self, seconds):
        """The differences that are left when the time is over; none as soon as there are none."""
        deadline = time.monotonic() + seconds * PATIENCE
        while True:
            self.show_line()
            self.ctl("call", "refreshPhonebookEntries")
            differences = self.mirror.differences(self.cloud, [LINE])
            if not differences or time.monotonic() > deadline or not self.alive():
                return differences
            time.sleep(0.3)

    def stop(self):
        """Both come down by themselves, which a thread that hangs would prevent."""
        try:
            if self.alive():
                return self.phone.stop(timeout=10)
            return self.phone.process.returncode
        finally:
            self.cloud.program.kill()

    def kill(self):
        self.phone.kill()
        self.cloud.program.kill()

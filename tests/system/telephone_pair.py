"""A telephone of its own cloud, whose time runs so fast that every synchronisation comes within seconds."""

import os
import time
from pathlib import Path

from mirror import Mirror
from orvane_cloud import Cloud
from orvane_system import BIN_DIR, EVERYTHING_ON, MAC, MODEL, PATIENCE, Program, run

OWN, LINE = 1001, 2001
# Sanitizers make programs several times slower; a pong has to come in time nevertheless.
TIME_SCALE = 60 if PATIENCE <= 1 else 20
# Threads that a telephone has for as long as it runs; all others do one piece of work and end.
LASTING = {"control", "end-watch", "orvane-phone", "siblings", "store", "timers", "WebSocket"}
# A poll every half second.
INTERVAL_SECONDS = 30
CALL = {"direction": "Inbound", "result": "Missed", "from": {"phoneNumber": "+49301", "name": "Anna"},
        "to": {"phoneNumber": "+49302", "name": "Line"}}


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


def account(calls, contacts, lines, token_lifetime_seconds):
    own = {"id": OWN, "number": "100", "name": "User", "grants": [LINE] if lines else [],
           "calls": [{**CALL, "id": f"own{number}", "telephonySessionId": f"s{number}"} for number in range(calls)],
           "contacts": [{"firstName": f"F{number}", "lastName": f"L{number}"} for number in range(contacts)]}
    line = {"id": LINE, "number": "200", "name": "Sales",
            "calls": [{**CALL, "id": "line1", "telephonySessionId": "l1"}]}
    return {"accountId": 1, "settings": {"tokenLifetimeSeconds": token_lifetime_seconds},
            "devices": [{"model": MODEL, "mac": MAC, "extensionId": OWN}], "extensions": [own, line]}


class Pair:
    """The telephone is started by the caller, so that a fault can wait for its login."""

    def __init__(self, directory, calls=12, contacts=60, lines=True, token_lifetime_seconds=3600, log_level=2):
        Path(directory).mkdir(parents=True, exist_ok=True)
        self.cloud = Cloud(directory, (MODEL, MAC), data=account(calls, contacts, lines, token_lifetime_seconds))
        self.directory = directory
        self.control = f"{directory}/control.sock"
        self.log_level = log_level
        self.lines = [LINE] if lines else []
        self.phone = None

    def start_phone(self):
        """Also after the telephone has ended, as a restart would."""
        arguments = [BIN_DIR / "orvane-phone", "--json", "--control", self.control, "--server", self.cloud.url,
                     "--ca", self.cloud.ca, "--model", MODEL, "--mac", MAC, "--log-level", self.log_level,
                     "--time-scale", TIME_SCALE]
        items = {**EVERYTHING_ON, "ORVANE_API_SYNC_INTERVAL": INTERVAL_SECONDS}
        for name, value in items.items():
            arguments += ["--set", f"{name}={value}"]
        self.phone = Program(arguments, self.directory, "phone")
        self.mirror = Mirror(self.phone.output)
        self.pid = self.phone.process.pid
        self.phone.output.wait_for(lambda line: line.get("event") == "ready", what="the ready line")

    def restart_cloud(self, data):
        """Another provider in the same place: its tokens are its own, its data what it is given."""
        self.cloud = Cloud(self.directory, (MODEL, MAC), data=data, listen=self.cloud.url.split("//")[1])

    def ctl(self, *arguments, timeout=45.0):
        return run([BIN_DIR / "orvane-ctl", "--control", self.control, *arguments], timeout)

    def alive(self):
        return self.phone.process.poll() is None

    def set_presence(self, *states):
        for busy in states:
            self.cloud.admin("PUT", f"presence/{OWN}", {"dndStatus": "DoNotAcceptAnyCalls" if busy else "TakeAllCalls"})

    def subscribed(self):
        """Whether the cloud would send the telephone an event."""
        return any(session["connected"] and session["subscriptions"] for session in self.cloud.admin("GET", "sessions"))

    def differences(self):
        return self.mirror.differences(self.cloud, self.lines)

    def ask_again(self, differences):
        """What does not come by polling: the phonebook, and the key of a line, which the telephone repeats whenever its
        devices change. A key that came before the user's own calls would have them take the line's away again."""
        if any(difference.startswith("contact") for difference in differences):
            self.ctl("call", "refreshPhonebookEntries")
        if self.lines and self.mirror.full_call_logs > 0:
            self.ctl("overview", "+49200@sip.example", "Sales")

    def wait_until_equal(self, seconds, help_it=None):
        """The differences that are left when the time is over; none as soon as there are none."""
        deadline = time.monotonic() + seconds * PATIENCE
        while True:
            differences = self.differences()
            if not differences or time.monotonic() > deadline or not self.alive():
                return differences
            self.ask_again(differences)
            if help_it:
                help_it(differences)
            time.sleep(0.25)

    def stop(self):
        """Both come down by themselves, which a thread that hangs would prevent."""
        try:
            if self.alive():
                return self.phone.stop(timeout=10)
            return self.phone.process.returncode
        finally:
            self.cloud.program.kill()

    def kill(self):
        if self.phone:
            self.phone.kill()
        self.cloud.program.kill()

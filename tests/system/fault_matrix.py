"""Every fault of the simulator against every exchange of the service.

A cell arms one fault, has the exchange run into it, lifts it, and looks: the telephone lives, answers within the
platform's time limits, has no thread left over, and holds what the cloud has. The cells run beside each other.
"""

import shutil
import tempfile
import time
import unittest
from concurrent.futures import ThreadPoolExecutor

from fault_list import EXCHANGES, FAULTS
from orvane_system import PATIENCE
from telephone_pair import LINE, OWN, Pair, process_figures

WORKERS = 10
ARMED_SECONDS = 1.2  # what `hold` lasts; faults that end by themselves are through earlier
RECOVERY_SECONDS = 20
# Threads that a telephone has for as long as it runs; all others do one piece of work and end.
LASTING = {"control", "orvane-phone", "siblings", "store", "timers", "WebSocket"}

# Kept: the phonebook stands still after an answer without a sync token, and a Location without a path ends the work of
# its thread or timer. A restart is the way out.
def is_restarted(exchange, fault):
    return (exchange, fault) == ("phonebook", "keys-missing") or fault == "redirect-without-a-path"


# Kept: a deleted call comes back with a full synchronisation only, an answer without records uses up its token, and a
# full event can lack the calls of shared lines. A synchronisation that is under way can undo the clearing of tokens.
FULL_ROUNDS = 4
# These run in a login only.
LOGIN = {"extension", "socket-token", "presence-read"}


class Cell:
    def __init__(self, exchange, fault):
        self.exchange, self.fault = exchange, fault
        self.directory = tempfile.mkdtemp(prefix="orvane-fault-")
        self.pair = None

    def run(self):
        """What is wrong, as text; nothing if all is well."""
        try:
            self.pair = Pair(f"{self.directory}/1", contacts=60)
            return self._disturbed()
        except AssertionError as failure:
            return str(failure)
        finally:
            if self.pair:
                self.pair.kill()
            shutil.rmtree(self.directory, ignore_errors=True)

    def _disturbed(self):
        before = self.pair.wait_until_equal(RECOVERY_SECONDS)
        if before:
            return f"before the fault: {before}"
        self._change_the_cloud()
        known = max(request["number"] for request in self.pair.cloud.requests())
        self.pair.cloud.admin("POST", "faults", {**EXCHANGES[self.exchange], **FAULTS[self.fault], "times": 0})
        begin = time.monotonic()
        with ThreadPoolExecutor(1) as caller:
            exchange = caller.submit(self._have_the_exchange_run)
            met = self._wait_until_met(known)
            time.sleep(max(0, begin + ARMED_SECONDS - time.monotonic()))
            self.pair.cloud.disarm()
            exchange.result()
        if not met:
            return "the exchange did not take place"
        return self._recovered()

    def _change_the_cloud(self):
        cloud = self.pair.cloud
        cloud.add_call(result="Missed", duration=4242)
        cloud.admin("POST", f"calls?extension={LINE}", {"direction": "Inbound", "result": "Missed", "duration": 17})
        cloud.add_contact(firstName="New", lastName="New")
        cloud.admin("PUT", f"presence/{OWN}", {"dndStatus": "DoNotAcceptAnyCalls"})

    def _have_the_exchange_run(self):
        """Logins and polls come by themselves; what the user does is done here."""
        pair = self.pair
        if self.exchange == "contact-write":
            pair.ctl("call", "addNewContact", "xmlData=<contact><firstname>T</firstname><lastname>T</lastname></contact>")
        elif self.exchange == "presence-write":
            pair.ctl("call", "updateUserPresenceStatus", "newDndState=true")
        elif self.exchange == "deletion":
            pair.ctl("call", "deleteCallLogEntry", "id=own3")
            pair.mirror.forget_call("own3")
        elif self.exchange == "phonebook":
            pair.ctl("call", "refreshPhonebookEntries")
        elif self.exchange == "grants":
            pair.ctl("devices-changed")
        elif self.exchange in LOGIN:
            pair.phone.stop()
            pair.start_phone()
        elif self.exchange == "upgrade":
            pair.cloud.admin("POST", "connections/close", {"how": "reset"})

    def _wait_until_met(self, known):
        part = EXCHANGES[self.exchange].get("path", "/account/~/extension/~")
        method = EXCHANGES[self.exchange].get("method")
        deadline = time.monotonic() + 10 * PATIENCE
        while time.monotonic() < deadline:
            for request in self.pair.cloud.admin("GET", f"requests?after={known}"):
                if part in request["target"] and (part != "/account/~/extension/~" or request["target"].endswith("~")):
                    if method in (None, request["method"]):
                        return True
            time.sleep(0.05)
        return False

    def _recovered(self):
        pair = self.pair
        if is_restarted(self.exchange, self.fault):
            pair.phone.kill()
            pair.start_phone()
        elif self.exchange in LOGIN | {"upgrade"}:
            # A read that failed and an event that came without a channel are made up for by the next event.
            for status in ("TakeAllCalls", "DoNotAcceptAnyCalls"):
                pair.cloud.admin("PUT", f"presence/{OWN}", {"dndStatus": status})
        elif self.exchange == "grants":
            pair.ctl("devices-changed")
        for _ in range(FULL_ROUNDS):
            differences = pair.wait_until_equal(RECOVERY_SECONDS / FULL_ROUNDS)
            if not differences or not pair.alive():
                break
            pair.ctl("call", "clearSyncTokens")
            pair.ctl("call", "refreshCallLogEntries")
        if not pair.alive():
            return f"the telephone ended with status {pair.phone.process.returncode}: {pair.phone.errors()[-1500:]}"
        if differences:
            return f"{differences}\n{pair.phone.errors()[-1500:]}"
        return self._threads_left_over() or self._end()

    def _threads_left_over(self):
        deadline = time.monotonic() + 10 * PATIENCE
        while True:
            left = [name for name in process_figures(self.pair.pid)[1] if name not in LASTING]
            if not left:
                return None
            if time.monotonic() > deadline:
                return f"threads are left over: {left}"
            time.sleep(0.1)

    def _end(self):
        """A thread that hangs would keep the telephone from its end."""
        status = self.pair.stop()
        return f"ended with status {status}" if status else None


class FaultMatrix(unittest.TestCase):
    cells = {}

    @classmethod
    def setUpClass(cls):
        cls.pool = ThreadPoolExecutor(WORKERS)
        for exchange in EXCHANGES:
            for fault in FAULTS:
                cls.cells[exchange, fault] = cls.pool.submit(lambda e=exchange, f=fault: Cell(e, f).run())

    @classmethod
    def tearDownClass(cls):
        cls.pool.shutdown(wait=True, cancel_futures=True)


def add_cell(exchange, fault):
    def test(self):
        self.assertIsNone(self.cells[exchange, fault].result())

    name = f"test_{exchange}_{fault}".replace("-", "_")
    test.__name__ = name
    setattr(FaultMatrix, name, test)


for an_exchange in EXCHANGES:
    for a_fault in FAULTS:
        add_cell(an_exchange, a_fault)


if __name__ == "__main__":
    unittest.main()

"""One fault of the simulator against one exchange of the service, with a telephone and a cloud of their own.

A cell arms the fault, has the exchange run into it while the cloud changes, lifts it, has the cloud change once more,
and looks: the telephone lives and answers, has no thread left over, and holds what the cloud has by the next
synchronisations alone. What is kept otherwise stands in fault_kept.py, and has to be so.
"""

import os
import shutil
import tempfile
import time
import unittest
from concurrent.futures import ThreadPoolExecutor

from fault_kept import CLEAR_TOKENS, DEVICES_CHANGED, RESTART, kept
from fault_list import EXCHANGES, FAULTS
from orvane_system import PATIENCE, wait_until
from telephone_pair import LASTING, LINE, Pair, process_figures

# Telephones at a time. A cell waits for most of its time.
WORKERS = 8
# Every cell, or every n-th where the build makes programs too slow for all of them.
STEP = int(os.environ.get("ORVANE_FAULT_STEP", "1"))
ARMED_SECONDS = 1.2  # two polls and more; what `hold` lasts
RECOVERY_SECONDS = 20

LOGIN = {"extension", "socket-token", "presence-read"}  # these run in a login only
# Their failures can cost an event; do-not-disturb is told again by the next one.
NEXT_EVENT = LOGIN | {"token", "upgrade", "presence-write"}
WITH_LINE = {"line-log", "grants"}


class Cell:
    def __init__(self, exchange, fault):
        self.exchange, self.fault = exchange, fault
        self.kept = kept(exchange, fault)
        self.directory = tempfile.mkdtemp(prefix="orvane-fault-")
        self.pair = None

    def run(self):
        """What is wrong, as text; nothing if all is well."""
        try:
            self.pair = Pair(f"{self.directory}/1", calls=6, contacts=60 if self.exchange == "phonebook" else 3,
                             lines=self.exchange in WITH_LINE,
                             token_lifetime_seconds=120 if self.exchange == "token" else 3600)
            self._disturb()
            return None
        except AssertionError as failure:
            log = self.pair.phone.errors()[-3000:] if self.pair and self.pair.phone else ""
            return f"{failure}\n{log}"
        finally:
            if self.pair:
                self.pair.kill()
            shutil.rmtree(self.directory, ignore_errors=True)

    def _disturb(self):
        if self.exchange not in LOGIN:
            self.pair.start_phone()
            self._expect_equal("before the fault", RECOVERY_SECONDS)
            wait_until(self.pair.subscribed, 10, "a subscription")
        self._arm()
        begin = time.monotonic()
        self._change_the_cloud(1)
        self.pair.set_presence(True)
        with ThreadPoolExecutor(1) as caller:
            exchange = caller.submit(self._have_the_exchange_run)
            wait_until(lambda: self.pair.cloud.admin("GET", "faults")[0]["done"], 15, "the exchange")
            time.sleep(max(0, begin + ARMED_SECONDS - time.monotonic()))
            self.pair.cloud.disarm()
            exchange.result()
        if self.exchange in LOGIN:
            # A login that is still to read do-not-disturb would read what comes now, and be equal by chance.
            self._expect_no_thread_left_over()
        self._change_the_cloud(2)
        # Twice, so that it is news whatever the telephone holds.
        self.pair.set_presence(True, False)
        if self.kept:
            self._expect_what_is_kept()
        self._expect_equal("after the fault", RECOVERY_SECONDS)
        self._expect_life()

    def _arm(self):
        # A lasting failure of the upgrade would use up the three attempts to restore the channel.
        times = 1 if self.exchange == "upgrade" else 0
        self.pair.cloud.admin("POST", "faults", {**EXCHANGES[self.exchange], **FAULTS[self.fault], "times": times})

    def _change_the_cloud(self, number):
        cloud = self.pair.cloud
        cloud.add_call(result="Missed", duration=4242 + number)
        cloud.admin("POST", f"calls?extension={LINE}", {"direction": "Inbound", "result": "Missed", "duration": number})
        cloud.add_contact(firstName="New", lastName=f"New {number}")

    def _have_the_exchange_run(self):
        """Logins and polls come by themselves; what the user does is done here."""
        pair = self.pair
        if self.exchange == "contact-write":
            pair.ctl("call", "addNewContact", "xmlData=<contact><firstname>T</firstname><lastname>T</lastname></contact>")
        elif self.exchange == "presence-write":
            pair.ctl("item", "CALL_DND_ACTIVATED=false")
            pair.ctl("call", "updateUserPresenceStatus", "newDndState=false")
        elif self.exchange == "deletion":
            pair.ctl("call", "deleteCallLogEntry", "id=own3")
            pair.mirror.forget_call("own3")
        elif self.exchange == "phonebook":
            pair.ctl("call", "refreshPhonebookEntries")
        elif self.exchange == "grants":
            pair.ctl("devices-changed")
        elif self.exchange in LOGIN:
            pair.start_phone()
        elif self.exchange == "upgrade":
            for session in pair.cloud.admin("GET", "sessions"):
                pair.cloud.admin("POST", f"sessions/{session['id']}/reset", {})

    def _expect_equal(self, when, seconds):
        differences = self.pair.wait_until_equal(seconds, self._tell_presence_again)
        if not self.pair.alive():
            raise AssertionError(f"{when}: the telephone ended with status {self.pair.phone.process.returncode}")
        if differences:
            raise AssertionError(f"{when}: {'; '.join(differences[:6])}")

    def _tell_presence_again(self, differences):
        if self.exchange in NEXT_EVENT and any(text.startswith("do not disturb") for text in differences):
            self.pair.set_presence(True, False)

    def _expect_what_is_kept(self):
        """The telephone does not become equal by itself, and does by the way out."""
        self._synchronise_twice()
        if not self.pair.differences():
            raise AssertionError(f"became equal by itself, in spite of: {self.kept.entry}")
        if not self.kept.blocks_a_thread:
            self._expect_no_thread_left_over()
        if self.kept.way_out == RESTART:
            self.pair.phone.kill() if self.kept.blocks_a_thread else self._end_phone()
            self.pair.start_phone()
        elif self.kept.way_out == DEVICES_CHANGED:
            self.pair.ctl("devices-changed")
        elif self.kept.way_out == CLEAR_TOKENS:
            # A synchronisation that is under way can undo it.
            for _ in range(3):
                self.pair.ctl("call", "clearSyncTokens")
                self.pair.ctl("call", "refreshCallLogEntries")
                if not self.pair.wait_until_equal(2):
                    break

    def _synchronise_twice(self):
        """Waits for it, but not for ever: a telephone that only a restart helps may have stopped asking."""
        cloud = self.pair.cloud
        known = max((request["number"] for request in cloud.requests()), default=0)
        seconds = 2.5 if self.kept.way_out == RESTART else 10
        deadline = time.monotonic() + seconds * PATIENCE
        while time.monotonic() < deadline:
            differences = self.pair.differences()
            if not self.kept.blocks_a_thread:
                self.pair.ask_again(differences)
            self._tell_presence_again(differences)
            answered = [request for request in cloud.admin("GET", f"requests?after={known}") if request["status"] == 200]
            if sum("~/call-log-sync" in request["target"] for request in answered) >= 2:
                break
            time.sleep(0.25)
        time.sleep(0.3)  # for the last answer to reach the observer

    def _expect_life(self):
        status = self.pair.ctl("status", timeout=10)
        if status.returncode != 0 or '"running":true' not in status.stdout.replace(" ", ""):
            raise AssertionError(f"the status is {status.stdout} {status.stderr}")
        self._expect_no_thread_left_over()
        self._end_phone()

    def _expect_no_thread_left_over(self):
        def left():
            return [name for name in process_figures(self.pair.pid)[1] if name not in LASTING]

        deadline = time.monotonic() + 10 * PATIENCE
        while left():
            if time.monotonic() > deadline:
                raise AssertionError(f"threads are left over: {left()}")
            time.sleep(0.1)

    def _end_phone(self):
        """A thread that hangs would keep the telephone from its end."""
        status = self.pair.phone.stop(timeout=10)
        if status != 0:
            raise AssertionError(f"ended with status {status}")


def fault_cases(*exchanges):
    """A test case with one test for each cell, which run beside each other."""

    class Faults(unittest.TestCase):
        cells = {}

        @classmethod
        def setUpClass(cls):
            cls.pool = ThreadPoolExecutor(WORKERS)
            for cell in chosen:
                cls.cells[cell] = cls.pool.submit(lambda cell=cell: Cell(*cell).run())

        @classmethod
        def tearDownClass(cls):
            cls.pool.shutdown(wait=True, cancel_futures=True)

    def add(cell):
        def test(self):
            self.assertIsNone(self.cells[cell].result())

        test.__name__ = f"test_{cell[0]}_{cell[1]}".replace("-", "_")
        setattr(Faults, test.__name__, test)

    # Diagonals of the matrix, so that a step leaves no exchange and no fault out.
    chosen = [(exchange, fault) for row, exchange in enumerate(EXCHANGES) for column, fault in enumerate(FAULTS)
              if exchange in exchanges and (row + column) % STEP == 0]
    for cell in chosen:
        add(cell)
    return Faults

"""Faults that concern no single exchange: connections, TLS, the port, the event channel, a provider that begins anew."""

import base64
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from fault_cell import RECOVERY_SECONDS, WORKERS, Cell
from fault_kept import CLEAR_TOKENS, RESTART, Kept
from orvane_system import PATIENCE, wait_until

DISTURBED_SECONDS = 2


class Fault:
    """`begin` and `end` get the pair of telephone and cloud."""

    def __init__(self, begin, end=lambda pair: None, kept=None):
        self.begin, self.end, self.kept = begin, end, kept


def each_session(action, body):
    def act(pair):
        for session in pair.cloud.admin("GET", "sessions"):
            if session["connected"]:
                pair.cloud.admin("POST", f"sessions/{session['id']}/{action}", body)
    return act


def in_turn(*steps):
    def act(pair):
        for step in steps:
            step(pair)
    return act


def presented(profile):
    return lambda pair: pair.cloud.tls(profile)


def channel_faults(**faults):
    return lambda pair: pair.cloud.admin("PUT", "channel-faults", faults)


def end_sessions(pair):
    pair.cloud.admin("DELETE", "sessions/all")


def connections_closed(how):
    return lambda pair: pair.cloud.close_connections(how)


def port_down(pair):
    pair.cloud.admin("PUT", "port", {"down": True})


def port_up(pair):
    pair.cloud.admin("PUT", "port", {"down": False})


def interface(state):
    return lambda pair: pair.ctl("interface", state)


def cloud_ends(pair):
    pair.data = pair.cloud.admin("GET", "data")
    pair.cloud.program.kill()


def cloud_begins(pair):
    pair.restart_cloud(pair.data)


def call_log_held(pair):
    pair.cloud.hold_requests()


def call_log_given_up(pair):
    """Nobody lifts the fault before the platform's own limit has ended the read."""
    pair.phone.wait_for_error_line("connectionHandler\\(\\) HttpClient::FAILURE on reading response", timeout=45)
    pair.cloud.release_requests()


def ends_channel(entry):
    return Kept("connection", frozenset(), RESTART, entry)


CLOSED = ends_channel("Only a close with local code 1006 is answered by a restore")
REFUSED = ends_channel("A subscription that the provider refuses is not asked for again")
DETAILS = ends_channel("Incomplete connection details leave the channel open and unused")
FOREIGN_TOKEN = Kept("connection", frozenset(), CLEAR_TOKENS,
                     "A token that the provider refuses stays, and each synchronisation repeats the refused request")
all_well = channel_faults()
reset = each_session("reset", {})
FAULTS = {
    "tls-handshake-refused": Fault(in_turn(presented("refused"), connections_closed("reset")), presented("trusted")),
    "tls-unknown-authority": Fault(in_turn(presented("untrusted"), connections_closed("reset")), presented("trusted")),
    "tls-old-version": Fault(in_turn(presented("tls1.1"), connections_closed("end")), presented("trusted")),
    "port-dead": Fault(port_down, port_up),
    "connections-ended": Fault(connections_closed("end")),
    "connections-reset": Fault(connections_closed("reset")),
    "interface-down": Fault(interface("down"), interface("up")),
    "cloud-begins-anew": Fault(cloud_ends, cloud_begins, kept=FOREIGN_TOKEN),
    "channel-reset": Fault(reset),
    "channel-closed-1001": Fault(each_session("close", {"code": 1001, "reason": "away"}), kept=CLOSED),
    "channel-closed-1011": Fault(each_session("close", {"code": 1011, "reason": "error"}), kept=CLOSED),
    "channel-closed-without-code": Fault(each_session("close", {"code": 0}), kept=CLOSED),
    "channel-session-expired": Fault(end_sessions, kept=CLOSED),
    "channel-no-frames": Fault(each_session("frame", {"raw": base64.b64encode(b"\xff" * 64).decode()}), kept=CLOSED),
    "channel-silent": Fault(each_session("silence", {"on": True})),
    "channel-late-pongs": Fault(each_session("freeze-pongs", {"on": True}), each_session("freeze-pongs", {"on": False})),
    "channel-recovery-refused": Fault(in_turn(channel_faults(refuseRecovery=True), each_session("silence", {"on": True})),
                                      all_well),
    "channel-frames-corrupt": Fault(channel_faults(corruptFrames=3), all_well),
    "channel-frames-twice": Fault(channel_faults(duplicateFrames=20), all_well),
    "channel-fragments": Fault(channel_faults(fragmentBytes=7), all_well),
    "channel-heartbeats-ignored": Fault(channel_faults(ignoreHeartbeats=True), all_well),
    "channel-sequence-stuck": Fault(in_turn(channel_faults(stuckSequence=True), reset), all_well),
    "channel-without-context": Fault(in_turn(channel_faults(omitContext=True), reset), all_well),
    "channel-replies-lost": Fault(in_turn(channel_faults(loseReplies=3), reset), all_well),
    "channel-replies-late": Fault(in_turn(channel_faults(replyDelayMilliseconds=500), reset), all_well),
    "channel-replies-refused": Fault(in_turn(channel_faults(replyStatus=500), reset), all_well, REFUSED),
    "channel-filters-disabled": Fault(in_turn(channel_faults(disabledFilters=["presence"]), reset), all_well, REFUSED),
    "channel-foreign-subscription": Fault(in_turn(channel_faults(foreignSubscriptionId=True), reset), all_well),
    "channel-details-incomplete": Fault(in_turn(channel_faults(connectionDetails={"recoveryTimeout": None}), reset), all_well, DETAILS),
    "request-never-answered": Fault(call_log_held, call_log_given_up),
}


class ConnectionCell(Cell):
    def __init__(self, name):
        super().__init__("connection", name)
        self.disturbance = FAULTS[name]
        self.kept = self.disturbance.kept

    def _disturb(self):
        pair = self.pair
        pair.start_phone()
        self._expect_equal("before the fault", RECOVERY_SECONDS)
        wait_until(pair.subscribed, 10, "a subscription")
        self._change_the_cloud(1)
        pair.set_presence(True)
        self.disturbance.begin(pair)
        time.sleep(DISTURBED_SECONDS * PATIENCE)
        self.disturbance.end(pair)
        self._change_the_cloud(2)
        pair.set_presence(True, False)
        if self.kept:
            self._expect_what_is_kept()
        self._expect_equal("after the fault", RECOVERY_SECONDS)
        self._expect_life()

    def _tell_presence_again(self, differences):
        if any(text.startswith("do not disturb") for text in differences):
            self.pair.set_presence(True, False)


class ConnectionFaults(unittest.TestCase):
    def test_each_reason_stands_in_the_documentation(self):
        told = (Path(__file__).resolve().parents[2] / "docs/kept-behaviour.md").read_text(encoding="utf-8")
        self.assertEqual([], [fault.kept.entry for fault in FAULTS.values() if fault.kept and fault.kept.entry not in told])

    @classmethod
    def setUpClass(cls):
        cls.pool = ThreadPoolExecutor(WORKERS)
        cls.cells = {name: cls.pool.submit(ConnectionCell(name).run) for name in FAULTS}

    @classmethod
    def tearDownClass(cls):
        cls.pool.shutdown(wait=True, cancel_futures=True)


def add_test(name):
    def test(self):
        self.assertIsNone(self.cells[name].result())

    setattr(ConnectionFaults, f"test_{name}".replace("-", "_").replace(".", "_"), test)


for a_fault in FAULTS:
    add_test(a_fault)


if __name__ == "__main__":
    unittest.main()

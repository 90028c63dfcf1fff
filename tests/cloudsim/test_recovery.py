"""Sessions that lose their connection, and everything that can go wrong on the channel."""

import base64
import json
import time
import unittest

from channel import DND, LINE_DND, PING, PONG, PRESENCE
from simulator import wait_until
from test_channel import SUBSCRIPTION, ChannelCase


class Recovery(ChannelCase):
    def tell(self, *sessions):
        for session in sessions:
            self.simulator.admin("POST", "/events/presence", {
                "activeCalls": [{"telephonyStatus": "NoCall", "telephonySessionId": session}]})

    def told(self, channel, count):
        return [channel.message()[1]["body"]["activeCalls"][0]["telephonySessionId"] for _ in range(count)]

    def wait_for_loss(self):
        wait_until(lambda: not self.simulator.admin("GET", "/sessions")[0]["connected"], what="the loss")

    def test_a_session_comes_back_with_what_was_missed_and_its_subscription(self):
        channel = self.subscribed(PRESENCE)
        channel.close()
        self.wait_for_loss()
        self.tell("s1", "s2")
        back = self.opened(channel.context)
        self.assertEqual("Successful", back.details["recoveryState"])
        self.assertEqual(["s1", "s2"], self.told(back, 2))
        self.tell("s3")
        self.assertEqual(["s3"], self.told(back, 1))
        self.assertEqual(1, len(self.simulator.admin("GET", "/sessions")))

    def test_what_was_sent_into_a_dead_connection_is_sent_again_and_what_was_seen_is_not(self):
        channel = self.subscribed(PRESENCE)
        self.tell("seen")
        self.assertEqual(["seen"], self.told(channel, 1))
        channel.vanish()
        self.tell("lost1", "lost2")
        back = self.opened(channel.context)
        self.assertEqual("Successful", back.details["recoveryState"])
        self.assertEqual(["lost1", "lost2"], self.told(back, 2))
        self.assertTrue(back.is_quiet())

    def test_sequences_go_on_rising_across_a_recovery(self):
        channel = self.subscribed(PRESENCE)
        before = int(channel.context.rsplit("-", 1)[1])
        channel.close()
        metadata, _ = self.connect(channel.context).message()
        self.assertGreater(metadata["wsc"]["sequence"], before)

    def test_the_recovery_time_ends_a_session(self):
        self.settings(recoveryTimeoutSeconds=1)
        channel = self.subscribed(PRESENCE)
        channel.close()
        self.wait_for_loss()
        wait_until(lambda: not self.simulator.admin("GET", "/sessions"), 5)
        back = self.opened(channel.context)
        self.assertEqual("Failed", back.details["recoveryState"])
        self.tell("s1")
        self.assertTrue(back.is_quiet())

    def test_more_lost_than_the_buffer_holds_fails(self):
        self.settings(recoveryBufferSize=2)
        for count, expected in ((2, "Successful"), (3, "Failed")):
            channel = self.subscribed(PRESENCE)
            channel.close()
            self.wait_for_loss()
            self.tell(*(f"s{number}" for number in range(count)))
            self.assertEqual(expected, self.opened(channel.context).details["recoveryState"])
            self.simulator.admin("DELETE", "/sessions/all")

    def test_a_long_session_that_saw_everything_recovers_whatever_the_buffer_holds(self):
        self.settings(recoveryBufferSize=2)
        channel = self.subscribed(PRESENCE)
        self.tell(*(f"s{number}" for number in range(6)))
        self.told(channel, 6)
        channel.close()
        self.assertEqual("Successful", self.opened(channel.context).details["recoveryState"])

    def test_made_up_contexts_and_those_of_other_users_fail(self):
        channel = self.subscribed(PRESENCE)
        session = channel.context.rsplit("-", 1)[0]
        for context in ("x", session, session + "-9999", session + "-x"):
            self.assertEqual("Failed", self.opened(context).details["recoveryState"], context)
        other = self.client(device="/KD26/0011AABBCC02")
        self.assertEqual("Failed", self.connect(channel.context, other).message()[1]["recoveryState"])

    def test_an_ended_session_fails(self):
        channel = self.subscribed(PRESENCE)
        self.simulator.admin("DELETE", "/sessions/all")
        self.assertEqual(1001, channel.ending())
        self.assertEqual("Failed", self.opened(channel.context).details["recoveryState"])


class ChannelFaults(ChannelCase):
    def faults(self, **faults):
        self.simulator.admin("PUT", "/channel-faults", faults)

    def heartbeat(self, channel, message_id="h"):
        channel.send({"type": "Heartbeat", "messageId": message_id})

    def test_refused_recovery(self):
        channel = self.subscribed(PRESENCE)
        channel.close()
        self.faults(refuseRecovery=True)
        self.assertEqual("Failed", self.opened(channel.context).details["recoveryState"])

    def test_changed_details(self):
        self.faults(connectionDetails={"recoveryState": "Perhaps", "idleTimeout": None})
        details = self.opened().details
        self.assertEqual("Perhaps", details["recoveryState"])
        self.assertNotIn("idleTimeout", details)

    def test_disabled_and_unanswered_filters(self):
        self.faults(disabledFilters=["line/presence"], unansweredFilters=["detailedTelephonyState"])
        data = self.subscribed(PRESENCE, DND, LINE_DND).subscription
        self.assertEqual([self.filter(self.own, "presence/dnd")], data["eventFilters"])
        line = self.filter(self.own, "presence/line/presence/dnd")
        self.assertEqual([(line, "Disabled")], [(entry["filter"], entry["reason"]) for entry in data["disabledFilters"]])
        self.faults(disabledFilters=["line/presence"], disabledAsTexts=True)
        self.assertEqual([line], self.subscribed(LINE_DND).subscription["disabledFilters"])

    def test_lost_and_late_replies(self):
        channel = self.opened()
        self.faults(loseReplies=1)
        self.heartbeat(channel, "lost")
        self.heartbeat(channel, "answered")
        self.assertEqual("answered", channel.message()[0]["messageId"])
        self.faults(replyDelayMilliseconds=400)
        begin = time.monotonic()
        self.heartbeat(channel)
        channel.message()
        self.assertGreaterEqual(time.monotonic() - begin, 0.4)

    def test_refused_requests_and_ignored_heartbeats(self):
        channel = self.opened()
        self.faults(replyStatus=500, ignoreHeartbeats=True)
        status, data = channel.request("POST", SUBSCRIPTION, {})
        self.assertEqual((500, True), (status, "errorCode" in data))
        self.heartbeat(channel)
        self.assertTrue(channel.is_quiet())

    def test_session_contexts_that_stand_still_or_are_missing(self):
        channel = self.opened()
        self.faults(stuckSequence=True)
        for _ in range(2):
            self.heartbeat(channel)
            self.assertEqual(1, channel.message()[0]["wsc"]["sequence"])
        self.faults(omitContext=True)
        self.heartbeat(channel)
        self.assertNotIn("wsc", channel.message()[0])

    def test_a_foreign_subscription_id(self):
        channel = self.subscribed(PRESENCE)
        self.faults(foreignSubscriptionId=True)
        _, data = channel.request("POST", f"{SUBSCRIPTION}/{channel.subscription['id']}/renew", {})
        self.assertNotEqual(channel.subscription["id"], data["id"])

    def test_corrupt_duplicate_and_fragmented_frames(self):
        channel = self.opened()
        self.faults(corruptFrames=1)
        self.heartbeat(channel)
        with self.assertRaises(json.JSONDecodeError):
            channel.message()
        self.faults(duplicateFrames=1)
        self.heartbeat(channel)
        self.assertEqual(channel.message(), channel.message())
        self.faults(fragmentBytes=50)
        self.heartbeat(channel)
        pieces = [channel.frame()]
        while not pieces[-1][1]:
            pieces.append(channel.frame())
        self.assertGreater(len(pieces), 2)
        self.assertEqual([1] + [0] * (len(pieces) - 1), [opcode for opcode, _, _ in pieces])
        self.assertEqual("Heartbeat", json.loads(b"".join(payload for _, _, payload in pieces))[0]["type"])

    def test_unknown_faults_are_refused(self):
        for fault in ({"soon": True}, {"loseReplies": "many"}, {"refuseRecovery": 1}, {"disabledFilters": "x"}, []):
            self.simulator.admin("PUT", "/channel-faults", fault, expected=(400,))


class Sessions(ChannelCase):
    def order(self, operation, expected=(200,), session="all", **body):
        return self.simulator.admin("POST", f"/sessions/{session}/{operation}", body, expected)

    def test_frames_of_any_kind_can_be_sent(self):
        channel = self.opened()
        self.order("frame", text="[]")
        self.order("frame", base64=base64.b64encode(b"\xff\xfe").decode(), opcode=2)
        self.order("frame", json=[{"type": "Error", "messageId": "1"}], final=False)
        self.order("frame", raw=base64.b64encode(b"\x83\x00").decode())
        self.assertEqual([(1, True, b"[]"), (2, True, b"\xff\xfe"), (1, False, b'[{"type":"Error","messageId":"1"}]'),
                          (3, True, b"")], [channel.frame() for _ in range(4)])

    def test_closes_with_any_code(self):
        for code, expected in ((1000, 1000), (4001, 4001), (1011, 1011), (0, None)):
            channel = self.opened()
            self.order("close", code=code, reason="why")
            self.assertEqual(expected, channel.ending())

    def test_a_reset_has_no_close(self):
        channel = self.opened()
        self.order("reset")
        self.assertIn(channel.ending(), ("reset", "end"))

    def test_silence_neither_answers_nor_sends_until_it_ends(self):
        channel = self.subscribed(PRESENCE)
        self.order("silence")
        channel.send_frame(PING, b"")
        self.simulator.admin("POST", "/events/presence", {})
        self.assertTrue(channel.is_quiet())
        self.order("silence", on=False)
        self.assertEqual({1, PONG}, {channel.frame()[0], channel.frame()[0]})

    def test_frozen_pongs_come_late_while_messages_go_on(self):
        channel = self.opened()
        self.order("freeze-pongs")
        channel.send_frame(PING, b"late")
        channel.send({"type": "Heartbeat", "messageId": "h"})
        self.assertEqual("h", channel.message()[0]["messageId"])
        self.assertTrue(channel.is_quiet())
        self.order("freeze-pongs", on=False)
        self.assertEqual((PONG, True, b"late"), channel.frame())

    def test_sessions_are_listed_and_unknown_ones_not_found(self):
        self.subscribed(PRESENCE)
        session, = self.simulator.admin("GET", "/sessions")
        self.assertEqual((self.own, True, "0011AABBCC01"), (session["extensionId"], session["connected"], session["mac"]))
        self.assertEqual([self.filter(self.own, "presence?detailedTelephonyState=true")],
                         session["subscriptions"][0]["eventFilters"])
        self.order("close", (404,), session="nobody")
        self.order("frame", (400,), base64="?")


if __name__ == "__main__":
    unittest.main()

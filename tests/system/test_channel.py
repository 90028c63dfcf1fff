"""The event channel over real TLS: the road of an event, loss and recovery, malformed frames."""

import json
import unittest

from orvane_system import wait_until
from telephone_case import TelephoneCase, full_call_log, incremental_call_log

POLLING_NEVER = {"ORVANE_API_SYNC_INTERVAL": "3600"}


class ChannelCase(TelephoneCase):
    def connected(self, settings=None, **options):
        """A telephone whose subscription is confirmed; polling is too rare to help."""
        options.setdefault("items", POLLING_NEVER)
        self.start_cloud(calls=2)
        if settings:
            self.cloud.admin("PATCH", "settings", settings)
        phone = self.start_phone(**options)
        _, self.position = phone.wait_for(full_call_log())
        phone.program.wait_for_error_line(r"receiving of the OV events .* is enabled")
        return phone

    def session(self):
        return self.cloud.admin("GET", "sessions")[0]["id"]

    def count(self, phone, text):
        return phone.program.errors().count(text)

    def call(self, **members):
        return self.cloud.admin("POST", "life/call", {"extensionId": self.cloud.extension, "ringMilliseconds": 50,
                                                      "talkMilliseconds": 0, "recordDelayMilliseconds": 0, **members})


class RoadOfAnEvent(ChannelCase):
    def test_an_ended_call_arrives_at_once(self):
        phone = self.connected()
        self.call()
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=10)
        self.assertEqual(1, len(line["data"]))
        self.assertTrue(line["data"][0].startswith("{Missed,"))

    def test_a_record_that_is_late_is_looked_for_every_ten_seconds(self):
        phone = self.connected(time_scale=20)
        begin = len(self.cloud.requests("call-log-sync"))
        # 1.25 s are 25 s of the telephone's time: looks at 0, 10, 20 and 30 s.
        self.call(recordDelayMilliseconds=1250)
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=15)
        looks = [request["time"] for request in self.cloud.requests("call-log-sync")[begin:]]
        self.assertGreaterEqual(len(looks), 3)
        for earlier, later in zip(looks, looks[1:]):
            self.assertGreaterEqual(later - earlier, 0.45)

    def test_the_filters_are_those_of_what_is_switched_on(self):
        self.connected()
        frames = [json.loads(frame["text"]) for frame in self.cloud.admin("GET", "frames")]
        body = next(frame[1] for frame in frames if frame[0].get("method") == "POST")
        own = "/restapi/v1.0/account/~/extension/~/"
        self.assertEqual("WebSocket", body["deliveryMode"]["transportType"])
        for event in ("presence?detailedTelephonyState=true", "message-store?direction=Inbound&type=Voicemail", "presence/dnd"):
            self.assertIn(own + event, body["eventFilters"])

    def test_without_a_confirmed_filter_events_are_not_taken(self):
        self.start_cloud(calls=1)
        self.cloud.admin("PUT", "channel-faults", {"disabledFilters": ["presence", "message-store"]})
        phone = self.start_phone(items=POLLING_NEVER)
        phone.wait_for(full_call_log())
        phone.program.wait_for_error_line("OV events that were removed")
        event = "/restapi/v1.0/account/1/extension/1/presence?detailedTelephonyState=true"
        self.cloud.admin("POST", "events/raw", {"extensionId": self.cloud.extension,
                                                "data": {"event": event, "ownerId": "1", "body": {"activeCalls": []}}})
        phone.program.wait_for_error_line(r"unsupported message for ov event")


class Recovery(ChannelCase):
    def test_a_connection_that_goes_silent_is_recovered_and_nothing_is_lost(self):
        phone = self.connected(time_scale=30)
        session = self.session()
        self.cloud.admin("POST", f"sessions/{session}/silence", {"on": True})
        self.call()
        phone.program.wait_for_error_line("recovery state is successful", timeout=30)
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=15)

    def test_a_failed_recovery_subscribes_anew(self):
        phone = self.connected(time_scale=30)
        self.cloud.admin("PUT", "channel-faults", {"refuseRecovery": True})
        self.cloud.admin("POST", f"sessions/{self.session()}/silence", {"on": True})
        phone.program.wait_for_error_line("recovery state is failed", timeout=30)
        wait_until(lambda: self.count(phone, "is enabled") >= 2, 15, "a second subscription")
        self.call()
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=15)

    def test_an_abnormal_close_is_restored_after_thirty_seconds(self):
        phone = self.connected(time_scale=30)
        self.cloud.admin("POST", f"sessions/{self.session()}/reset")
        phone.program.wait_for_error_line("indicating abnormally closed event received")
        phone.program.wait_for_error_line("Web socket connection will be restored", timeout=30)
        wait_until(lambda: self.count(phone, "is enabled") >= 2, 15, "a second subscription")
        self.call()
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=15)

    def test_three_abnormal_closes_use_up_the_restores(self):
        phone = self.connected(time_scale=100)
        for number in range(4):
            wait_until(lambda: self.count(phone, "is enabled") >= number + 1, 20, "a subscription")
            live = [session for session in self.cloud.admin("GET", "sessions") if session.get("connected", True)]
            self.cloud.admin("POST", f"sessions/{live[-1]['id']}/reset")
            wait_until(lambda: self.count(phone, "indicating abnormally closed") >= number + 1, 15, "the close")
        self.assertEqual(3, self.count(phone, "restoreAfterErrorTimer expired"))
        self.assertEqual(4, self.count(phone, "is enabled"))

    def test_an_orderly_close_is_not_answered_by_a_reconnection(self):
        phone = self.connected(time_scale=100)
        before = len(self.cloud.requests("wstoken"))
        self.cloud.admin("POST", f"sessions/{self.session()}/close", {"code": 1001, "reason": "away"})
        phone.program.wait_for_error_line(r"onClose\(\) code\[1001\] localCode\[1001\]")
        phone.wait_for(incremental_call_log(), after=self.position, timeout=60)
        self.assertEqual(before, len(self.cloud.requests("wstoken")))

    def test_an_interface_that_comes_back_in_time_recovers(self):
        phone = self.connected()
        self.assertEqual(0, phone.ctl("interface", "down").returncode)
        self.call()
        self.assertEqual(0, phone.ctl("interface", "up").returncode)
        phone.program.wait_for_error_line("recovery state is successful", timeout=30)
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=15)
        self.assertEqual(1, len(self.cloud.requests("/auth/token")))

    def test_without_an_established_channel_the_interface_leads_to_a_new_login(self):
        self.start_cloud(calls=1)
        self.cloud.fault(path="wstoken", times=1, status=500)
        phone = self.start_phone(items=POLLING_NEVER)
        _, position = phone.wait_for(full_call_log())
        self.cloud.wait_for_request("wstoken")
        wait_until(lambda: phone.ctl("call", "isRunning").stdout.strip() == '{"result":true}', 10, "a login")
        self.assertEqual(0, phone.ctl("interface", "down").returncode)
        self.assertIn("false", phone.ctl("call", "isRunning").stdout)
        self.assertEqual(0, phone.ctl("interface", "up").returncode)
        self.cloud.wait_for_request("/auth/token", count=2)


class HostileFrames(ChannelCase):
    def test_no_frame_ends_or_blocks_the_telephone(self):
        phone = self.connected()
        session = self.session()
        meta = {"type": "ServerNotification", "messageId": "m"}
        filters = "/restapi/v1.0/account/~/extension/~/"
        hostile = [
            {"text": ""}, {"text": "["}, {"text": "[]"}, {"text": "{}"}, {"text": "[1,2,3]"}, {"text": "null"},
            {"text": "[" * 5000}, {"json": [{"type": "ServerNotification", "messageId": 7}]},
            {"json": [meta, {"event": filters + "presence?detailedTelephonyState=true&a&b=1&presence", "body": {}}]},
            {"json": [meta, {"event": "a&b&presence?detailedTelephonyState=true&x&y=1", "body": {}}]},
            {"json": [meta, {"event": filters + "message-store?&&&&", "body": {"extensionId": "x"}}]},
            {"json": [meta, {"event": "presence/dnd", "body": []}]},
            {"json": [{"type": "ConnectionDetails", "messageId": "x", "status": 200, "wsc": 7}, {}]},
            {"json": [{"type": "ClientRequest", "messageId": "unknown"}, {"eventFilters": ["a&b"]}]},
            {"json": [{"type": "Heartbeat", "messageId": "unknown"}]},
            {"json": [{"type": "x" * 100000, "messageId": "y"}]},
        ]
        for frame in hostile:
            self.cloud.admin("POST", f"sessions/{session}/frame", frame)
        self.call()
        phone.wait_for(incremental_call_log(lambda data: data), after=self.position, timeout=20)
        self.assertTrue(phone.alive())


if __name__ == "__main__":
    unittest.main()

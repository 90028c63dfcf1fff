"""The event channel: session, heartbeat, subscriptions, notifications."""

import time
import unittest

from channel import CLOSE, DND, LINE_DND, PING, PONG, PRESENCE, VOICEMAIL, Channel, Refused, subscription
from simulator import EXTENSION, SimulatorCase, wait_until

SUBSCRIPTION = "/restapi/v1.0/subscription"


class ChannelCase(SimulatorCase):
    def setUp(self):
        super().setUp()
        self.own, self.colleague = (device["extensionId"] for device in self.simulator.ready["devices"][:2])
        self.line = self.simulator.admin("GET", "/grants")[0]
        self.telephone = self.client()

    def socket_token(self, client=None):
        return (client or self.telephone).call("POST", "/restapi/oauth/wstoken").json()

    def connect(self, context=None, client=None):
        channel = Channel(self.simulator, self.socket_token(client), context)
        self.addCleanup(channel.close)
        return channel

    def opened(self, context=None):
        channel = self.connect(context)
        channel.details = channel.message()[1]
        return channel

    def subscribed(self, *filters):
        channel = self.opened()
        status, channel.subscription = channel.subscribe(*filters)
        self.assertEqual(200, status)
        return channel

    def settings(self, **settings):
        self.simulator.admin("PATCH", "/settings", settings)

    def filter(self, extension, rest):
        account = self.simulator.admin("GET", "/data")["accountId"]
        return f"/restapi/v1.0/account/{account}/extension/{extension}/{rest}"


class Opening(ChannelCase):
    def test_the_token_names_the_address_and_a_lifetime(self):
        token = self.socket_token()
        self.assertTrue(token["uri"].startswith("wss://127.0.0.1:"))
        self.assertIs(int, type(token["expires_in"]))
        self.assertTrue(token["ws_access_token"].isalnum())

    def test_details_come_first_with_a_session_context_and_no_recovery_state(self):
        self.settings(idleTimeoutSeconds=77, recoveryTimeoutSeconds=66, recoveryBufferSize=55)
        metadata, data = self.connect().message()
        self.assertEqual(("ConnectionDetails", 200), (metadata["type"], metadata["status"]))
        self.assertGreater(metadata["wsc"]["sequence"], 0)
        self.assertEqual((77, 66, 55), (data["idleTimeout"], data["recoveryTimeout"], data["recoveryBufferSize"]))
        self.assertEqual({"creationTime": str, "maxConnectionsPerSession": int, "absoluteTimeout": int},
                         {key: type(data[key]) for key in ("creationTime", "maxConnectionsPerSession", "absoluteTimeout")})
        self.assertNotIn("recoveryState", data)

    def test_a_bad_token_is_refused(self):
        token = self.socket_token()
        for change in ({"ws_access_token": "x"}, {"uri": token["uri"] + "x"}):
            with self.assertRaises(Refused):
                Channel(self.simulator, {**token, **change})
        self.simulator.admin("POST", "/tokens/expire")
        with self.assertRaisesRegex(Refused, "401"):
            Channel(self.simulator, token)

    def test_the_upgrade_can_fail_as_any_request(self):
        self.simulator.fault(path="/ws?", status=503)
        with self.assertRaisesRegex(Refused, "503"):
            self.connect()

    def test_a_ping_is_answered_with_its_own_payload(self):
        channel = self.opened()
        channel.send_frame(PING, b"abc")
        self.assertEqual((PONG, True, b"abc"), channel.frame())

    def test_a_close_is_answered(self):
        channel = self.opened()
        channel.send_frame(CLOSE, b"\x03\xe8bye")
        self.assertEqual(1000, channel.ending())

    def test_fragments_of_a_message_are_joined_even_around_a_ping(self):
        channel = self.opened()
        channel.send_frame(1, b'[{"type":"Heart', final=False)
        channel.send_frame(PING, b"")
        channel.send_frame(0, b'beat","messageId":"m1"}]')
        self.assertEqual(PONG, channel.frame()[0])
        self.assertEqual("m1", channel.message()[0]["messageId"])

    def test_a_frame_without_a_mask_ends_the_channel(self):
        channel = self.opened()
        channel.socket.sendall(b"\x81\x02[]")
        self.assertEqual(1002, channel.ending())


class Messages(ChannelCase):
    def test_a_heartbeat_comes_back_and_sequences_rise(self):
        channel = self.opened()
        sequences = []
        for message_id in ("h1", "h2", "h3"):
            channel.send({"type": "Heartbeat", "messageId": message_id})
            metadata, data = channel.message()
            self.assertEqual(("Heartbeat", message_id, 200, None),
                             (metadata["type"], metadata["messageId"], metadata["status"], data))
            sequences.append(metadata["wsc"]["sequence"])
        self.assertEqual(sorted(set(sequences)), sequences)

    def test_what_is_no_message_is_answered_with_an_error(self):
        channel = self.opened()
        for text in (b"nothing", b"{}", b"[]", b'[{"type":"Heartbeat"}]', b'[{"type":"Song","messageId":"1"}]'):
            channel.send_frame(1, text)
            self.assertEqual("Error", channel.message()[0]["type"], text)

    def test_rest_requests_are_answered_inside_frames(self):
        channel = self.opened()
        status, data = channel.request("GET", EXTENSION + "~")
        self.assertEqual((200, self.own), (status, data["id"]))
        self.assertEqual(404, channel.request("GET", "/nothing")[0])

    def test_frames_are_recorded(self):
        channel = self.opened()
        channel.send({"type": "Heartbeat", "messageId": "h1"})
        channel.message()
        frames = self.simulator.admin("GET", "/frames")
        self.assertEqual(['[{"type": "Heartbeat", "messageId": "h1"}]'], [frame["text"] for frame in frames])
        self.assertEqual(self.simulator.admin("GET", "/sessions")[0]["id"], frames[0]["session"])


class Limits(ChannelCase):
    def test_a_channel_without_messages_is_closed_and_pings_do_not_count(self):
        self.settings(idleTimeoutSeconds=1)
        channel = self.opened()
        begin = time.monotonic()
        while time.monotonic() - begin < 0.7:
            channel.send_frame(PING, b"")
            time.sleep(0.1)
        self.assertEqual(1001, channel.ending())

    def test_heartbeats_keep_it_open(self):
        self.settings(idleTimeoutSeconds=1)
        channel = self.opened()
        begin = time.monotonic()
        while time.monotonic() - begin < 2:
            channel.send({"type": "Heartbeat", "messageId": str(time.monotonic())})
            channel.message()
            time.sleep(0.3)

    def test_the_absolute_limit_ends_the_session_for_good(self):
        self.settings(absoluteTimeoutSeconds=1)
        channel = self.opened()
        self.assertEqual(1001, channel.ending())
        self.assertEqual("Failed", self.opened(channel.context).details["recoveryState"])


class Subscriptions(ChannelCase):
    def test_a_reply_confirms_filters_with_concrete_ids(self):
        channel = self.opened()
        status, data = channel.subscribe(PRESENCE, VOICEMAIL, DND, LINE_DND)
        self.assertEqual(200, status)
        self.assertEqual([self.filter(self.own, rest.split("/~/", 2)[2]) for rest in (PRESENCE, VOICEMAIL, DND, LINE_DND)],
                         data["eventFilters"])
        self.assertEqual(("Active", 900, str, str, str),
                         (data["status"], data["expiresIn"], type(data["id"]), type(data["creationTime"]),
                          type(data["expirationTime"])))
        self.assertNotIn("disabledFilters", data)
        self.assertEqual(["id", "creationTime", "status"], list(data)[:3])

    def test_filters_that_cannot_be_had_are_disabled_with_a_reason(self):
        foreign = f"/restapi/v1.0/account/~/extension/{self.colleague}/message-store"
        granted = f"/restapi/v1.0/account/~/extension/{self.line}/message-store"
        data = self.subscribed("nonsense", foreign, granted).subscription
        self.assertEqual([self.filter(self.line, "message-store")], data["eventFilters"])
        self.assertEqual([("nonsense", "Unknown"), (self.filter(self.colleague, "message-store"), "InsufficientPermissions")],
                         [(entry["filter"], entry["reason"]) for entry in data["disabledFilters"]])

    def test_renewal_keeps_the_id_and_is_newer(self):
        channel = self.subscribed(PRESENCE)
        first = channel.subscription
        status, second = channel.request("POST", f"{SUBSCRIPTION}/{first['id']}/renew", {})
        self.assertEqual((200, first["id"], first["eventFilters"]), (status, second["id"], second["eventFilters"]))
        self.assertGreater(second["creationTime"], first["creationTime"])

    def test_renewal_can_keep_the_creation_time(self):
        self.settings(renewalKeepsCreationTime=True)
        channel = self.subscribed(PRESENCE)
        _, second = channel.request("POST", f"{SUBSCRIPTION}/{channel.subscription['id']}/renew", {})
        self.assertEqual(channel.subscription["creationTime"], second["creationTime"])

    def test_an_update_replaces_the_filters(self):
        channel = self.subscribed(PRESENCE)
        status, data = channel.request("PUT", f"{SUBSCRIPTION}/{channel.subscription['id']}", subscription(DND))
        self.assertEqual((200, [self.filter(self.own, "presence/dnd")]), (status, data["eventFilters"]))
        self.simulator.admin("POST", "/events/presence", {"activeCalls": []})
        self.assertTrue(channel.is_quiet())

    def test_a_cancelled_subscription_is_gone(self):
        channel = self.subscribed(PRESENCE)
        path = f"{SUBSCRIPTION}/{channel.subscription['id']}"
        self.assertEqual((204, None), channel.request("DELETE", path))
        self.assertEqual(404, channel.request("POST", path + "/renew", {})[0])
        self.simulator.admin("POST", "/events/presence", {})
        self.assertTrue(channel.is_quiet())

    def test_an_expired_subscription_is_gone(self):
        self.settings(subscriptionLifetimeSeconds=0)
        channel = self.subscribed(PRESENCE)
        self.simulator.admin("POST", "/events/presence", {})
        self.assertTrue(channel.is_quiet())
        self.assertEqual(404, channel.request("POST", f"{SUBSCRIPTION}/{channel.subscription['id']}/renew", {})[0])

    def test_what_cannot_be_read_is_refused(self):
        channel = self.opened()
        for body in (None, {}, {"eventFilters": []}, {"eventFilters": "x", "deliveryMode": {"transportType": "WebSocket"}},
                     {"eventFilters": [PRESENCE], "deliveryMode": {"transportType": "Pigeon"}}):
            status, data = channel.request("POST", SUBSCRIPTION, body)
            self.assertEqual(400, status, body)
            self.assertIn("errorCode", data)
        self.assertEqual([], self.simulator.admin("GET", "/sessions")[0]["subscriptions"])


class Notifications(ChannelCase):
    def notification(self, channel):
        metadata, data = channel.message()
        self.assertEqual(("ServerNotification", 200), (metadata["type"], metadata["status"]))
        self.assertEqual(str(self.own), data["ownerId"])
        self.assertIn(data["event"], channel.subscription["eventFilters"])
        self.assertLess(list(data).index("ownerId"), list(data).index("body"))
        return data

    def test_a_call_is_told_of_while_it_rings_and_when_it_ends_and_then_has_its_record(self):
        channel = self.subscribed(PRESENCE)
        before = self.telephone.full_call_log().json()["syncInfo"]["syncToken"]
        session = self.simulator.admin("POST", "/life/call", {
            "ringMilliseconds": 100, "talkMilliseconds": 100, "recordDelayMilliseconds": 100,
            "call": {"direction": "Inbound", "from": {"phoneNumber": "+441632960009", "name": "Wanda"}}})
        seen = []
        for _ in range(3):
            call, = self.notification(channel)["body"]["activeCalls"]
            self.assertEqual((session["telephonySessionId"], "+441632960009", "Wanda"),
                             (call["telephonySessionId"], call["from"], call["fromName"]))
            seen.append(call["telephonyStatus"])
        self.assertEqual(["Ringing", "CallConnected", "NoCall"], seen)
        record, = wait_until(lambda: self.telephone.call_log_changes(before).json()["records"])
        self.assertEqual((session["telephonySessionId"], "Accepted"), (record["telephonySessionId"], record["result"]))

    def test_a_message_names_the_extension_by_number(self):
        channel = self.subscribed(VOICEMAIL, f"/restapi/v1.0/account/~/extension/{self.line}/message-store")
        for extension in (self.own, self.line):
            self.simulator.admin("POST", "/events/message-store", {"extensionId": extension})
            self.assertEqual(extension, self.notification(channel)["body"]["extensionId"])
        self.simulator.admin("POST", "/events/message-store", {"extensionId": self.colleague})
        self.assertTrue(channel.is_quiet())

    def test_the_own_dnd_status_is_told_whoever_changed_it(self):
        channel = self.subscribed(DND)
        self.telephone.call("PUT", EXTENSION + "~/presence", '{"dndStatus":"DoNotAcceptAnyCalls"}')
        self.assertEqual({"extensionId": str(self.own), "dndStatus": "DoNotAcceptAnyCalls"},
                         self.notification(channel)["body"])
        self.simulator.admin("PUT", f"/presence/{self.own}", {"dndStatus": "TakeAllCalls"})
        self.assertEqual("TakeAllCalls", self.notification(channel)["body"]["dndStatus"])

    def test_a_status_that_stays_is_not_told(self):
        channel = self.subscribed(DND)
        self.telephone.call("PUT", EXTENSION + "~/presence", '{"dndStatus":"TakeAllCalls"}')
        self.assertTrue(channel.is_quiet())

    def test_colleagues_are_told_to_who_watches_lines_and_the_own_status_is_not(self):
        channel = self.subscribed(LINE_DND)
        self.simulator.admin("PUT", f"/presence/{self.own}", {"dndStatus": "DoNotAcceptAnyCalls"})
        self.simulator.admin("PUT", f"/presence/{self.colleague}", {"dndStatus": "DoNotAcceptAnyCalls"})
        data = self.notification(channel)
        self.assertEqual((str(self.colleague), self.filter(self.own, "presence/line/presence/dnd")),
                         (data["body"]["extensionId"], data["event"]))
        self.assertTrue(channel.is_quiet())

    def test_other_users_are_told_nothing(self):
        channel = self.subscribed(PRESENCE, VOICEMAIL, DND)
        self.simulator.admin("POST", "/events/presence", {"extensionId": self.colleague})
        self.simulator.admin("POST", "/events/dnd", {"extensionId": self.colleague})
        self.assertTrue(channel.is_quiet())

    def test_a_raw_notification_goes_out_as_it_is(self):
        channel = self.subscribed(PRESENCE)
        self.simulator.admin("POST", "/events/raw", {"data": {"event": "odd", "body": 7}})
        self.assertEqual({"event": "odd", "body": 7}, channel.message()[1])


if __name__ == "__main__":
    unittest.main()

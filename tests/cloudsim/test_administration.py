"""The administration itself: data, settings, life."""

import http.client
import time
import unittest
import urllib.parse

from channel import DND, PRESENCE
from simulator import EXTENSION, PATIENCE, SimulatorCase, wait_until
from test_channel import ChannelCase


class Data(SimulatorCase):
    def test_all_paths_are_listed(self):
        paths = self.simulator.admin("GET", "/")
        for path in ("GET /requests", "POST /faults", "PUT /tls", "POST /sessions/{id}/close", "POST /life/call"):
            self.assertIn(path, paths)

    def test_calls_take_any_members_and_give_them_back(self):
        call = self.simulator.admin("POST", "/calls", {"duration": 12.0, "delegate": {"id": "1"}, "id": 77})
        self.assertEqual((12.0, {"id": "1"}, 77), (call["duration"], call["delegate"], call["id"]))
        self.assertIn(call, self.client().full_call_log().json()["records"])
        changed = self.simulator.admin("PATCH", "/calls/77", {"delegate": None, "result": "Busy"})
        self.assertEqual(("Busy", False), (changed["result"], "delegate" in changed))

    def test_an_extension_is_named_in_the_query(self):
        other = self.simulator.ready["devices"][1]["extensionId"]
        self.assertEqual(10, len(self.simulator.admin("GET", f"/calls?extension={other}")))
        self.simulator.admin("DELETE", f"/calls?extension={other}")
        self.assertEqual([0, 6], [len(self.simulator.admin("GET", f"/calls{query}")) for query in (f"?extension={other}", "")])
        self.simulator.admin("GET", "/calls?extension=1", expected=(404,))
        self.simulator.admin("GET", "/calls?extension=x", expected=(400,))

    def test_calls_and_contacts_are_made_up_on_demand(self):
        self.simulator.admin("POST", "/calls/generate", {"count": 10})
        self.simulator.admin("POST", "/contacts/generate", {"count": 600})
        self.assertEqual((16, 603), (len(self.simulator.admin("GET", "/calls")), len(self.simulator.admin("GET", "/contacts"))))
        self.simulator.admin("POST", "/contacts/generate", {"count": "many"}, expected=(400,))

    def test_devices_and_extensions_come_and_go(self):
        self.simulator.admin("POST", "/extensions", {"id": 9, "number": "9", "name": "New"})
        self.simulator.admin("POST", "/extensions", {"id": 9, "number": "9", "name": "New"}, expected=(409,))
        self.simulator.admin("POST", "/devices", {"model": "KX", "mac": "AA", "extensionId": 9})
        self.simulator.admin("POST", "/devices", {"model": "KX", "mac": "AB", "extensionId": 8}, expected=(400,))
        client = self.client(device="/KX/AA")
        self.assertEqual("New", client.get(EXTENSION + "~").json()["name"])
        self.simulator.admin("PATCH", "/extensions/9", {"name": "Newer"})
        self.assertEqual("Newer", client.get(EXTENSION + "~").json()["name"])
        self.simulator.admin("DELETE", "/devices/KX/AA")
        self.assertEqual(404, client.get("/auth/token").status)
        self.simulator.admin("DELETE", "/extensions/9")
        self.assertEqual(404, client.get(EXTENSION + "~").status)

    def test_settings_that_do_not_exist_or_fit_are_refused_as_a_whole(self):
        before = self.simulator.admin("GET", "/settings")
        for settings in ({"colour": 1}, {"idleTimeoutSeconds": "1"}, {"grantsPerPage": 0}, {"recoveryBufferSize": -1},
                         {"idleTimeoutSeconds": 5, "renewalKeepsCreationTime": 1}):
            self.simulator.admin("PATCH", "/settings", settings, expected=(400,))
        self.assertEqual(before, self.simulator.admin("GET", "/settings"))

    def test_bad_requests_are_told_apart(self):
        self.simulator.admin("GET", "/nowhere", expected=(404,))
        self.simulator.admin("DELETE", "/settings", expected=(405,))
        self.simulator.admin("PATCH", "/calls/unknown", {}, expected=(404,))
        self.simulator.admin("POST", "/calls", expected=(400,))
        address = urllib.parse.urlparse(self.simulator.ready["admin"])
        connection = http.client.HTTPConnection(address.hostname, address.port)
        connection.request("POST", "/calls", "{")
        self.assertEqual(400, connection.getresponse().status)
        connection.close()


class Life(ChannelCase):
    arguments = ("--live",)

    def test_calls_ring_and_end_and_colleagues_change(self):
        channel = self.subscribed(PRESENCE, DND)
        token = self.telephone.full_call_log().json()["syncInfo"]["syncToken"]
        deadline = time.monotonic() + 60 * PATIENCE
        states = set()
        while not {"Ringing", "NoCall"} <= states:
            self.assertLess(time.monotonic(), deadline, states)
            body = channel.message(60)[1]["body"]
            states |= {call["telephonyStatus"] for call in body.get("activeCalls", [])}
        wait_until(lambda: self.telephone.call_log_changes(token).json()["records"], 30)

    def test_it_can_be_stopped(self):
        self.assertIs(True, self.simulator.admin("GET", "/life")["running"])
        self.simulator.admin("PUT", "/life", {"running": False})
        self.assertIs(False, self.simulator.admin("GET", "/life")["running"])


if __name__ == "__main__":
    unittest.main()

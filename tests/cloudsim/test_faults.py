"""Faults of answers and of connections, armed by count, path, method and time."""

import http.client
import json
import time
import unittest
import urllib.parse

from simulator import EXTENSION, SimulatorCase, wait_until

BROKEN = (ConnectionError, http.client.HTTPException, OSError)


class Conditions(SimulatorCase):
    path = EXTENSION + "~/presence"

    def statuses(self, client, count, path=None, method="GET"):
        return [client.call(method, path or self.path).status for _ in range(count)]

    def test_a_fault_strikes_once_unless_told_otherwise(self):
        client = self.client()
        self.simulator.fault(path="presence", status=503)
        self.assertEqual([503, 200, 200], self.statuses(client, 3))

    def test_it_begins_with_the_nth_request_and_strikes_so_many_times(self):
        client = self.client()
        self.simulator.fault(path="presence", nth=2, times=2, status=500)
        self.assertEqual([200, 500, 500, 200], self.statuses(client, 4))

    def test_it_lasts_until_it_is_disarmed(self):
        client = self.client()
        number = self.simulator.fault(path="presence", times=0, status=500)
        self.assertEqual([500] * 5, self.statuses(client, 5))
        self.assertEqual([{"seen": 5, "done": 5}],
                         [{key: fault[key] for key in ("seen", "done")} for fault in self.simulator.admin("GET", "/faults")])
        self.simulator.admin("DELETE", f"/faults/{number}")
        self.assertEqual([200], self.statuses(client, 1))

    def test_path_pattern_and_method_select(self):
        client = self.client()
        self.simulator.fault(pathPattern="presence$", method="PUT", times=0, status=500)
        self.assertEqual([200], self.statuses(client, 1))
        self.assertEqual([500], self.statuses(client, 1, method="PUT"))
        self.assertEqual([200], self.statuses(client, 1, path=EXTENSION + "~"))

    def test_it_is_bounded_in_time(self):
        client = self.client()
        self.simulator.fault(path="presence", times=0, status=500, forMilliseconds=300)
        self.assertEqual([500], self.statuses(client, 1))
        wait_until(lambda: self.statuses(client, 1) == [200], 3)

    def test_faults_act_together_and_the_first_wins(self):
        client = self.client()
        self.simulator.fault(path="presence", status=500)
        self.simulator.fault(path="presence", status=503, headers={"X-Second": "yes"})
        answer = client.get(self.path)
        self.assertEqual((500, "yes"), (answer.status, answer.headers["x-second"]))

    def test_what_is_no_fault_is_refused(self):
        for fault in ({}, [], {"path": "x"}, {"status": "many"}, {"satus": 500}, {"pathPattern": "(", "status": 500},
                      {"reset": "soon"}, {"bodyBase64": "?"}, {"status": 5}):
            self.simulator.admin("POST", "/faults", fault, expected=(400,))
        self.assertEqual([], self.simulator.admin("GET", "/faults"))


class Answers(SimulatorCase):
    path = EXTENSION + "~/call-log-sync?syncType=FSync"

    def answer(self, **fault):
        client = self.client()
        self.simulator.fault(path="call-log-sync", **fault)
        return client.get(self.path)

    def test_too_many_requests_with_any_retry_after(self):
        for value in (0, 31, "soon", "Fri, 20 Nov 2026 12:00:00 GMT"):
            answer = self.answer(status=429, retryAfter=value)
            self.assertEqual((429, str(value)), (answer.status, answer.headers["retry-after"]))

    def test_redirections(self):
        client = self.client()
        target = client.device + self.path
        for kind, expected in (("same", self.simulator.ready["url"] + target), ("relative", target),
                               ("port", self.simulator.ready["alternate"] + target),
                               ("https://elsewhere.example/a?b=1", "https://elsewhere.example/a?b=1")):
            answer = self.answer(redirect=kind)
            self.assertEqual((302, expected), (answer.status, answer.headers["location"]))
        self.assertEqual(307, self.answer(redirect="same", status=307).status)

    def test_the_alternate_port_has_the_same_provider_behind_it(self):
        first = self.client()
        second = self.client(url=self.simulator.ready["alternate"], log_in=False)
        second.token = first.token
        self.assertEqual(200, second.get(self.path).status)
        port = urllib.parse.urlparse(self.simulator.ready["alternate"]).port
        self.assertEqual(port, self.simulator.requests("call-log-sync")[-1]["port"])

    def test_given_bodies(self):
        self.assertEqual(b"text", self.answer(body="text").body)
        self.assertEqual({"a": [1]}, self.answer(bodyJson={"a": [1]}).json())
        self.assertEqual(b"\xff\xfe", self.answer(bodyBase64="//4=").body)
        answer = self.answer(emptyAnswer=True)
        self.assertEqual((200, b""), (answer.status, answer.body))

    def test_malformed_json(self):
        with self.assertRaises(json.JSONDecodeError):
            self.answer(malformed=True).json()

    def test_missing_keys_and_wrong_types_at_any_depth(self):
        answer = self.answer(missing=["syncInfo", "startTime"], wrongTypes=["duration", "from"]).json()
        self.assertNotIn("syncInfo", answer)
        for record in answer["records"]:
            self.assertNotIn("startTime", record)
            self.assertEqual("7", record["duration"])
            self.assertIs(str, type(record.get("from", "")))

    def test_nested_first(self):
        answer = self.answer(nestedFirst=True)
        self.assertEqual({"to"}, {list(record)[0] for record in answer.json()["records"]})

    def test_a_huge_body_keeps_its_data(self):
        answer = self.answer(hugeBodyBytes=3 * 1024 * 1024)
        self.assertGreaterEqual(len(answer.body), 3 * 1024 * 1024)
        self.assertEqual(6, len(answer.json()["records"]))

    def test_chunked_coding(self):
        answer = self.answer(chunkBytes=100)
        self.assertEqual("chunked", answer.headers["transfer-encoding"])
        self.assertEqual(6, len(answer.json()["records"]))


class Connections(SimulatorCase):
    path = EXTENSION + "~/call-log-sync?syncType=FSync"

    def timed(self, **fault):
        client = self.client()
        self.simulator.fault(path="call-log-sync", **fault)
        begin = time.monotonic()
        answer = client.get(self.path)
        self.assertEqual(6, len(answer.json()["records"]))
        return time.monotonic() - begin

    def assert_broken(self, **fault):
        client = self.client()
        self.simulator.fault(path="call-log-sync", **fault)
        with self.assertRaises(BROKEN):
            client.get(self.path)
        client.close()
        self.assertEqual(200, client.get(self.path).status)

    def test_latency_with_jitter(self):
        self.assertGreaterEqual(self.timed(latencyMilliseconds=300, jitterMilliseconds=100), 0.3)

    def test_limited_bandwidth(self):
        self.assertGreaterEqual(self.timed(bytesPerSecond=4000), 0.3)

    def test_a_trickled_body(self):
        self.assertGreaterEqual(self.timed(trickleBytes=500, trickleMilliseconds=100), 0.3)

    def test_resets_before_and_in_an_answer(self):
        self.assert_broken(reset="before")
        self.assert_broken(reset="in")

    def test_a_reset_after_an_answer_costs_the_next_request(self):
        client = self.client()
        self.simulator.fault(path="call-log-sync", reset="after")
        self.assertEqual(200, client.get(self.path).status)
        with self.assertRaises(BROKEN):
            client.get(self.path)

    def test_a_cut_body_ends_early(self):
        client = self.client()
        self.simulator.fault(path="call-log-sync", cutAfterBytes=10)
        with self.assertRaises(http.client.IncompleteRead) as failure:
            client.get(self.path)
        self.assertEqual(10, len(failure.exception.partial))

    def test_random_bytes(self):
        self.assert_broken(randomBytes=500)

    def test_a_close_behind_a_whole_answer_is_not_announced(self):
        client = self.client()
        self.simulator.fault(path="call-log-sync", closeAfter=True)
        answer = client.get(self.path)
        self.assertEqual(200, answer.status)
        self.assertNotIn("connection", answer.headers)
        with self.assertRaises(BROKEN):
            client.get(self.path)

    def test_requests_are_held_until_the_fault_is_disarmed_and_see_what_changed_meanwhile(self):
        client = self.client()
        number = self.simulator.fault(path="call-log-sync", times=0, hold=True)
        client.connection.request("GET", client.device + self.path, None, {"Authorization": f"Bearer {client.token}"})
        wait_until(lambda: self.simulator.requests("call-log-sync"))
        self.simulator.admin("POST", "/calls", {})
        self.simulator.admin("DELETE", f"/faults/{number}")
        self.assertEqual(7, len(json.loads(client.connection.getresponse().read())["records"]))

    def test_all_connections_are_closed_at_once(self):
        for how in ("end", "reset"):
            client = self.client()
            self.simulator.admin("POST", "/connections/close", {"how": how})
            with self.assertRaises(BROKEN):
                client.get(self.path)

    def test_a_port_that_is_down_comes_back(self):
        client = self.client()
        self.simulator.admin("PUT", "/port", {"down": True, "forMilliseconds": 400})
        with self.assertRaises(BROKEN):
            client.get(self.path)
        client.close()
        with self.assertRaises(ConnectionRefusedError):
            client.get(self.path)

        def comes_back():
            client.close()
            try:
                return client.get(self.path).status == 200
            except BROKEN:
                return False

        wait_until(comes_back, 5)

    def test_the_server_goes_on_after_bytes_that_are_no_http(self):
        client = self.client()
        client.connection.sock.sendall(b"\x00\x01\x02 nonsense\r\n\r\n")
        self.assertIn(b"400", client.connection.sock.recv(100))
        self.assertEqual(200, self.client().get(self.path).status)


class Journal(SimulatorCase):
    def test_requests_are_recorded_in_order_with_all_that_they_held(self):
        client, other = self.client(), self.client()
        self.simulator.admin("DELETE", "/requests")
        client.call("PUT", EXTENSION + "~/presence?a=1&a=%202", '{"dndStatus":"TakeAllCalls"}', {"X-Test": "yes"})
        other.get(EXTENSION + "~")
        client.get(EXTENSION + "~")
        first, second, third = self.simulator.requests()
        self.assertEqual(("PUT", client.device + EXTENSION + "~/presence?a=1&a=%202",
                          client.device + EXTENSION + "~/presence", [["a", "1"], ["a", " 2"]],
                          '{"dndStatus":"TakeAllCalls"}', 200),
                         tuple(first[key] for key in ("method", "target", "path", "query", "body", "status")))
        self.assertEqual(("yes", f"Bearer {client.token}"),
                         (first["headers"]["x-test"], first["headers"]["authorization"]))
        self.assertEqual(first["connection"], third["connection"])
        self.assertNotEqual(first["connection"], second["connection"])
        self.assertLessEqual(first["time"], second["time"])
        self.assertEqual([third], self.simulator.admin("GET", f"/requests?after={second['number']}"))


if __name__ == "__main__":
    unittest.main()

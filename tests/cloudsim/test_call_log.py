"""The call log: everything, changes since a token, deletion."""

import json
import unittest

from simulator import EXTENSION, SimulatorCase

REQUIRED = {"id": str, "action": str, "startTime": str, "direction": str, "result": str, "duration": int,
            "telephonySessionId": str}


class FullSynchronisation(SimulatorCase):
    arguments = ("--seed", 3, "--calls", 120)

    def test_the_newest_calls_come_first_up_to_the_count(self):
        client = self.client()
        records = client.full_call_log().json()["records"]
        self.assertEqual(100, len(records))
        times = [record["startTime"] for record in records]
        self.assertEqual(sorted(times, reverse=True), times)
        self.assertEqual(records[:7], client.full_call_log(count=7).json()["records"])

    def test_every_record_has_what_telephones_need_and_no_empty_texts(self):
        for record in self.client().full_call_log().json()["records"]:
            for key, kind in REQUIRED.items():
                self.assertIs(kind, type(record[key]), record)
            self.assertNotIn('""', json.dumps(record))
            self.assertNotIn("deleted", record)

    def test_an_objects_scalars_come_before_its_nested_objects(self):
        def check(value):
            if isinstance(value, dict):
                structured = [isinstance(member, (dict, list)) for member in value.values()]
                self.assertEqual(sorted(structured), structured, list(value))
                value = value.values()
            for member in value if isinstance(value, list) or not isinstance(value, (str, int)) else ():
                if isinstance(member, (dict, list)):
                    check(member)

        check(self.client().full_call_log().json())

    def test_all_kinds_of_calls_occur(self):
        records = self.client().full_call_log().json()["records"]
        results = {(record["direction"], record["result"]) for record in records}
        for result in ("Accepted", "Call connected", "Missed", "Busy", "Rejected", "No Answer", "Hang Up", "Blocked",
                       "IP Phone Offline", "Voicemail"):
            self.assertIn(("Inbound", result), results)
        self.assertIn(("Outbound", "Call connected"), results)

    def test_calls_of_different_extensions_have_different_ids(self):
        ids = [call["id"] for extension in self.simulator.admin("GET", "/extensions") for call in extension["calls"]]
        self.assertEqual(len(ids), len(set(ids)))

    def test_a_count_or_a_kind_that_cannot_be_is_refused(self):
        client = self.client()
        for query in ("syncType=FSync&recordCount=0", "syncType=FSync&recordCount=many", "syncType=Perhaps"):
            self.assertEqual(400, client.get(f"{EXTENSION}~/call-log-sync?{query}").status, query)


class IncrementalSynchronisation(SimulatorCase):
    def synchronised(self):
        client = self.client()
        answer = client.full_call_log().json()
        return client, answer["syncInfo"]["syncToken"], [record["id"] for record in answer["records"]]

    def test_without_changes_it_is_empty(self):
        client, token, _ = self.synchronised()
        answer = client.call_log_changes(token)
        self.assertEqual((200, []), (answer.status, answer.json()["records"]))

    def test_it_brings_one_new_one_changed_and_one_deleted_call_and_then_nothing(self):
        client, token, ids = self.synchronised()
        new = self.simulator.admin("POST", "/calls", {"result": "Missed", "from": {"phoneNumber": "+493023125001"}})
        self.simulator.admin("PATCH", f"/calls/{ids[0]}", {"duration": 4242})
        self.simulator.admin("DELETE", f"/calls/{ids[1]}")
        answer = client.call_log_changes(token).json()
        records = {record["id"]: record for record in answer["records"]}
        self.assertEqual({new["id"], ids[0], ids[1]}, set(records))
        self.assertEqual("Missed", records[new["id"]]["result"])
        self.assertEqual(4242, records[ids[0]]["duration"])
        self.assertIs(True, records[ids[1]]["deleted"])
        for key, kind in REQUIRED.items():
            self.assertIs(kind, type(records[ids[1]][key]))
        self.assertNotEqual(token, answer["syncInfo"]["syncToken"])
        self.assertEqual([], client.call_log_changes(answer["syncInfo"]["syncToken"]).json()["records"])

    def test_an_old_token_still_brings_all_changes_since_then(self):
        client, token, ids = self.synchronised()
        for result in ("Missed", "Busy"):
            self.simulator.admin("PATCH", f"/calls/{ids[0]}", {"result": result})
            self.assertEqual([result], [record["result"] for record in client.call_log_changes(token).json()["records"]])

    def test_more_changes_than_the_count_are_left_to_the_next_token(self):
        client, token, _ = self.synchronised()
        added = [self.simulator.admin("POST", "/calls", {})["id"] for _ in range(5)]
        seen = []
        for expected in (2, 2, 1, 0):
            answer = client.call_log_changes(token, count=2).json()
            self.assertEqual(expected, len(answer["records"]))
            seen += [record["id"] for record in answer["records"]]
            token = answer["syncInfo"]["syncToken"]
        self.assertEqual(sorted(added), sorted(seen))

    def test_deleted_calls_are_left_out_where_they_are_not_wanted(self):
        client, token, ids = self.synchronised()
        self.simulator.admin("DELETE", f"/calls/{ids[0]}")
        answer = client.get(f"{EXTENSION}~/call-log-sync?syncType=ISync&showDeleted=false&syncToken={token}")
        self.assertEqual([], answer.json()["records"])

    def test_an_unknown_token_is_an_error(self):
        client, token, _ = self.synchronised()
        self.assertEqual(400, client.call_log_changes("never-issued").status)
        self.assertEqual(400, client.call_log_changes("").status)
        self.simulator.admin("POST", "/sync-tokens/forget")
        self.assertEqual(400, client.call_log_changes(token).status)


class Deletion(SimulatorCase):
    def test_one_call_is_deleted_by_its_telephone(self):
        client = self.client()
        answer = client.full_call_log().json()
        token, gone = answer["syncInfo"]["syncToken"], answer["records"][2]["id"]
        deletion = client.call("DELETE", f"{EXTENSION}~/call-log/{gone}")
        self.assertEqual((204, b""), (deletion.status, deletion.body))
        self.assertNotIn(gone, [record["id"] for record in client.full_call_log().json()["records"]])
        self.assertEqual([gone], [record["id"] for record in client.call_log_changes(token).json()["records"]])
        self.assertEqual(404, client.call("DELETE", f"{EXTENSION}~/call-log/{gone}").status)

    def test_all_calls_are_deleted_and_those_of_lines_stay(self):
        client = self.client()
        line = int(client.get(EXTENSION + "~/grant").json()["records"][0]["extension"]["id"])
        self.assertEqual(204, client.call("DELETE", EXTENSION + "~/call-log").status)
        self.assertEqual([], client.full_call_log().json()["records"])
        self.assertEqual(10, len(client.full_call_log(line).json()["records"]))

    def test_a_call_of_a_granted_line_is_deleted(self):
        client = self.client()
        line = client.get(EXTENSION + "~/grant").json()["records"][0]["extension"]["id"]
        gone = client.full_call_log(line).json()["records"][0]["id"]
        self.assertEqual(204, client.call("DELETE", f"{EXTENSION}{line}/call-log/{gone}").status)
        self.assertEqual(9, len(client.full_call_log(line).json()["records"]))


if __name__ == "__main__":
    unittest.main()

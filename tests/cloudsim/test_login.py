"""Tokens, extensions, and who may see what."""

import unittest

from simulator import EXTENSION, SimulatorCase


class Tokens(SimulatorCase):
    def test_a_known_device_gets_a_token_with_its_lifetime(self):
        self.simulator.admin("PATCH", "/settings", {"tokenLifetimeSeconds": 1234})
        answer = self.client(log_in=False).get("/auth/token")
        self.assertEqual(200, answer.status)
        self.assertEqual(1234, answer.json()["expiresIn"])
        self.assertGreater(len(answer.json()["accessToken"]), 20)

    def test_an_unknown_device_gets_none(self):
        for device in ("/KD24/FFFFFFFFFFFF", "/KD99/0011AABBCC01"):
            self.assertEqual(404, self.client(device=device, log_in=False).get("/auth/token").status)

    def test_a_request_without_a_token_is_refused(self):
        answer = self.client(log_in=False).get(EXTENSION + "~")
        self.assertEqual(401, answer.status)
        self.assertIn("www-authenticate", answer.headers)

    def test_a_token_of_another_device_is_refused(self):
        client, other = self.client(), self.client(device="/KD26/0011AABBCC02")
        client.token = other.token
        self.assertEqual(401, client.get(EXTENSION + "~").status)

    def test_a_token_that_has_run_out_is_refused(self):
        self.simulator.admin("PATCH", "/settings", {"tokenLifetimeSeconds": 0})
        self.assertEqual(401, self.client().get(EXTENSION + "~").status)

    def test_expiry_on_demand_voids_all_tokens(self):
        client = self.client()
        self.assertEqual(200, client.get(EXTENSION + "~").status)
        self.simulator.admin("POST", "/tokens/expire")
        self.assertEqual(401, client.get(EXTENSION + "~").status)

    def test_a_token_is_asked_for_with_get(self):
        self.assertEqual(405, self.client(log_in=False).call("POST", "/auth/token").status)


class Extensions(SimulatorCase):
    def test_the_extension_has_its_own_id_first(self):
        answer = self.client().get(EXTENSION + "~")
        self.assertEqual(self.simulator.ready["devices"][0]["extensionId"], answer.json()["id"])
        self.assertTrue(answer.body.startswith(b'{"id":'))

    def test_a_device_given_to_another_user_has_that_user_after_the_next_login(self):
        client = self.client()
        other = self.simulator.ready["devices"][1]["extensionId"]
        self.simulator.admin("PATCH", "/devices/KD24/0011AABBCC01", {"extensionId": other})
        self.assertNotEqual(other, client.get(EXTENSION + "~").json()["id"])
        client.log_in()
        self.assertEqual(other, client.get(EXTENSION + "~").json()["id"])

    def test_another_users_data_are_forbidden_and_unknown_ones_not_found(self):
        client = self.client()
        other = self.simulator.ready["devices"][1]["extensionId"]
        self.assertEqual(403, client.full_call_log(other).status)
        self.assertEqual(403, client.get(f"{EXTENSION}{other}").status)
        self.assertEqual(404, client.full_call_log(12345).status)
        self.assertEqual(404, client.get("/restapi/v1.0/account/99/extension/~").status)

    def test_unknown_paths_and_methods(self):
        client = self.client()
        self.assertEqual(404, client.get("/restapi/v1.0/nothing").status)
        self.assertEqual(404, client.call("DELETE", "").status)
        self.assertEqual(405, client.call("PUT", EXTENSION + "~/grant").status)


class Grants(SimulatorCase):
    def lines(self):
        return [entry for entry in self.simulator.admin("GET", "/extensions") if entry["type"] == "SharedLinesGroup"]

    def test_texts_name_the_line_and_all_stand_on_one_page(self):
        answer = self.client().get(EXTENSION + "~/grant").json()
        self.assertEqual((1, 1), (answer["page"], answer["totalPages"]))
        self.assertEqual([{"id": str(line["id"]), "extensionNumber": line["number"], "type": line["type"],
                           "name": line["name"]} for line in self.lines()],
                         [record["extension"] for record in answer["records"]])

    def test_grants_come_in_pages(self):
        first = self.simulator.ready["devices"][0]["extensionId"]
        others = [entry["id"] for entry in self.simulator.admin("GET", "/extensions") if entry["id"] != first][:3]
        self.simulator.admin("PUT", "/grants", others)
        self.simulator.admin("PATCH", "/settings", {"grantsPerPage": 2})
        client = self.client()
        pages = [client.get(EXTENSION + "~/grant" + query).json() for query in ("", "?page=2")]
        self.assertEqual([(1, 2), (2, 2)], [(page["page"], page["totalPages"]) for page in pages])
        self.assertEqual([str(id) for id in others],
                         [record["extension"]["id"] for page in pages for record in page["records"]])
        self.assertEqual(404, client.get(EXTENSION + "~/grant?page=3").status)

    def test_a_granted_line_gives_its_calls_until_the_grant_is_taken_away(self):
        client, line = self.client(), self.lines()[0]["id"]
        self.assertEqual(10, len(client.full_call_log(line, 25).json()["records"]))
        self.simulator.admin("PUT", "/grants", [])
        self.assertEqual(403, client.full_call_log(line, 25).status)

    def test_no_grants_are_one_empty_page(self):
        self.simulator.admin("PUT", "/grants", [])
        answer = self.client().get(EXTENSION + "~/grant").json()
        self.assertEqual((1, 1, []), (answer["page"], answer["totalPages"], answer["records"]))


class Presence(SimulatorCase):
    path = EXTENSION + "~/presence"

    def test_the_own_status_is_read_and_changed(self):
        client = self.client()
        answer = client.get(self.path).json()
        self.assertEqual("TakeAllCalls", answer["dndStatus"])
        self.assertEqual(self.simulator.ready["devices"][0]["extensionId"], answer["extension"]["id"])
        answer = client.call("PUT", self.path, '{"dndStatus":"DoNotAcceptAnyCalls"}')
        self.assertEqual((200, "DoNotAcceptAnyCalls"), (answer.status, answer.json()["dndStatus"]))
        self.assertEqual("DoNotAcceptAnyCalls", client.get(self.path).json()["dndStatus"])

    def test_a_status_that_does_not_exist_is_refused_and_changes_nothing(self):
        client = self.client()
        for body in ('{"dndStatus":"Perhaps"}', '{"dndStatus":1}', "nothing", "[]"):
            self.assertEqual(400, client.call("PUT", self.path, body).status, body)
        self.assertEqual("TakeAllCalls", client.get(self.path).json()["dndStatus"])

    def test_a_colleagues_status_can_be_read_and_not_changed(self):
        client, colleague = self.client(), self.simulator.ready["devices"][2]["extensionId"]
        self.simulator.admin("PUT", f"/presence/{colleague}", {"dndStatus": "TakeDepartmentCallsOnly"})
        path = f"{EXTENSION}{colleague}/presence"
        answer = client.get(path).json()
        self.assertEqual((colleague, "TakeDepartmentCallsOnly"), (answer["extension"]["id"], answer["dndStatus"]))
        self.assertEqual(403, client.call("PUT", path, '{"dndStatus":"TakeAllCalls"}').status)


if __name__ == "__main__":
    unittest.main()

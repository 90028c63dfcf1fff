"""The address book: pages, tokens, contacts that telephones write."""

import json
import unittest

from simulator import EXTENSION, SimulatorCase

SYNC = EXTENSION + "~/address-book-sync"
CONTACT = EXTENSION + "~/address-book/contact"


class Download(SimulatorCase):
    def download(self, client, token=None):
        """All pages as a telephone asks for them, with page ids that pile up."""
        query = "?syncType=FSync&perPage=50" if token is None else f"?syncType=ISync&perPage=50&syncToken={token}"
        pages = []
        while True:
            page = client.get(SYNC + query).json()
            pages.append(page)
            if "nextPageId" not in page:
                return pages
            self.assertIs(int, type(page["nextPageId"]))
            query += f"&pageId={page['nextPageId']}"

    def fill(self, count):
        self.simulator.admin("DELETE", "/contacts")
        self.simulator.admin("POST", "/contacts/generate", {"count": count, "seed": 1})

    def test_books_come_in_pages_of_fifty(self):
        client = self.client()
        for size, expected in ((0, [0]), (1, [1]), (50, [50]), (51, [50, 1]), (1000, [50] * 20)):
            self.fill(size)
            pages = self.download(client)
            self.assertEqual(expected, [len(page["records"]) for page in pages])
            self.assertEqual(size, len({record["id"] for page in pages for record in page["records"]}))
            self.assertEqual(1, len({page["syncInfo"]["syncToken"] for page in pages}))

    def test_records_have_an_integer_id_and_are_alive(self):
        for record in self.download(self.client())[0]["records"]:
            self.assertEqual((int, "Alive"), (type(record["id"]), record["availability"]))

    def test_changes_since_a_token_and_then_nothing_under_the_same_token(self):
        client = self.client()
        page = self.download(client)[0]
        token, ids = page["syncInfo"]["syncToken"], [record["id"] for record in page["records"]]
        self.assertTrue(token.isalnum())
        new = self.simulator.admin("POST", "/contacts", {"firstName": "Nora"})["id"]
        self.simulator.admin("PATCH", f"/contacts/{ids[0]}", {"lastName": "Changed"})
        self.simulator.admin("DELETE", f"/contacts/{ids[1]}")
        page = self.download(client, token)[0]
        records = {record["id"]: record for record in page["records"]}
        self.assertEqual({new, ids[0], ids[1]}, set(records))
        self.assertEqual("Changed", records[ids[0]]["lastName"])
        self.assertEqual("Deleted", records[ids[1]]["availability"])
        newer = page["syncInfo"]["syncToken"]
        self.assertNotEqual(token, newer)
        page = self.download(client, newer)[0]
        self.assertEqual(([], newer), (page["records"], page["syncInfo"]["syncToken"]))

    def test_a_change_between_two_pages_belongs_to_the_next_download(self):
        self.fill(120)
        client = self.client()
        first = client.get(SYNC + "?syncType=FSync&perPage=50").json()
        gone = first["records"][0]["id"]
        self.simulator.admin("DELETE", f"/contacts/{gone}")
        added = self.simulator.admin("POST", "/contacts", {"firstName": "Late"})["id"]
        records = [record["id"] for record in first["records"]]
        for page_id in (2, 3):
            page = client.get(f"{SYNC}?syncType=FSync&perPage=50&pageId={page_id}").json()
            records += [record["id"] for record in page["records"]]
        self.assertEqual(120, len(set(records)))
        self.assertNotIn(added, records)
        changes = self.download(client, page["syncInfo"]["syncToken"])[0]["records"]
        self.assertEqual({gone, added}, {record["id"] for record in changes})

    def test_an_unknown_token_is_an_error(self):
        client = self.client()
        self.assertEqual(400, client.get(SYNC + "?syncType=ISync&perPage=50&syncToken=nothing").status)
        self.assertEqual(400, client.get(SYNC + "?syncType=ISync&perPage=50").status)


class WriteBack(SimulatorCase):
    def test_a_contact_is_added_edited_and_deleted(self):
        client = self.client()
        answer = client.call("POST", CONTACT, '{"firstName":"Zoë","mobilePhone":"+441632960001"}')
        contact = answer.json()
        self.assertEqual((200, "Zoë", "Alive"), (answer.status, contact["firstName"], contact["availability"]))
        answer = client.call("PUT", f"{CONTACT}/{contact['id']}", '{"lastName":"Graf","email":"z@example.org"}').json()
        self.assertEqual({"id": contact["id"], "availability": "Alive", "lastName": "Graf", "email": "z@example.org"},
                         answer)
        self.assertEqual(answer, client.get(f"{CONTACT}/{contact['id']}").json())
        answer = client.call("DELETE", f"{CONTACT}/{contact['id']}")
        self.assertEqual((200, "Deleted"), (answer.status, answer.json()["availability"]))
        self.assertEqual(404, client.get(f"{CONTACT}/{contact['id']}").status)

    def test_what_cannot_be_read_or_found_is_refused(self):
        client = self.client()
        for body in ("", "[]", "{", '{"firstName":7}'):
            self.assertEqual(400, client.call("POST", CONTACT, body).status, body)
        for method in ("PUT", "DELETE"):
            for name in ("99", "x"):
                self.assertEqual(404, client.call(method, f"{CONTACT}/{name}", "{}").status)

    def test_variants_of_success_carry_the_change_out(self):
        client = self.client()
        self.simulator.fault(path="address-book/contact", method="POST", answerStatus=201)
        answer = client.call("POST", CONTACT, '{"firstName":"A"}')
        self.assertEqual((201, "A"), (answer.status, answer.json()["firstName"]))
        self.simulator.fault(path="address-book/contact", method="DELETE", answerStatus=204)
        deletion = client.call("DELETE", f"{CONTACT}/{answer.json()['id']}")
        self.assertEqual((204, b""), (deletion.status, deletion.body))
        self.assertNotIn(answer.json()["id"], [contact["id"] for contact in self.simulator.admin("GET", "/contacts")])


if __name__ == "__main__":
    unittest.main()

"""The personal address book, from the cloud to the observers."""

import json
import unittest

from telephone_case import TelephoneCase, full_phonebook, incremental_phonebook, full_call_log


class Download(TelephoneCase):
    def requests(self):
        return self.cloud.requests("address-book-sync")

    def book_of(self, size):
        self.start_cloud(calls=0, contacts=size)
        phone = self.start_phone()
        phone.wait_for(full_call_log())
        return phone

    def test_an_empty_book_publishes_nothing(self):
        phone = self.book_of(0)
        self.cloud.wait_for_request("address-book-sync")
        self.cloud.wait_for_request("wstoken")
        self.assertEqual(1, len(self.requests()))
        self.assertFalse([line for line in phone.output.since() if full_phonebook()(line)])

    def test_books_up_to_the_limit_come_down_whole(self):
        # A full book sends no request for a page that follows; one of 249 contacts ends with its last page.
        for size, pages in ((1, 1), (50, 1), (249, 5), (250, 5)):
            with self.subTest(size=size):
                phone = self.book_of(size)
                line, _ = phone.wait_for(full_phonebook())
                self.assertEqual(size, len(line["data"]))
                self.assertEqual(size, len({json.loads(record)["id"] for record in line["data"]}))
                self.assertEqual(pages, len(self.requests()))
                phone.program.stop()
                self.cloud.program.stop()

    def test_a_larger_book_ends_at_the_limit(self):
        for size in (251, 600):
            with self.subTest(size=size):
                phone = self.book_of(size)
                line, _ = phone.wait_for(full_phonebook())
                self.assertEqual(250, len(line["data"]))
                self.assertEqual(5, len(self.requests()))
                phone.program.stop()
                self.cloud.program.stop()

    def test_page_ids_pile_up_in_the_query(self):
        self.book_of(130).wait_for(full_phonebook())
        self.assertEqual([0, 1, 2], [request["target"].count("&pageId=") for request in self.requests()])

    def test_an_incremental_download_brings_one_new_one_changed_and_one_deleted_contact(self):
        phone = self.book_of(5)
        line, position = phone.wait_for(full_phonebook())
        ids = [json.loads(record)["id"] for record in line["data"]]
        new_id = self.cloud.add_contact(firstName="Nora", lastName="Neu", mobilePhone="+49170")
        self.cloud.change_contact(ids[0], lastName="Changed")
        self.cloud.delete_contact(ids[1])
        self.assertEqual(0, phone.ctl("call", "refreshPhonebookEntries").returncode)
        line, _ = phone.wait_for(incremental_phonebook(), after=position)
        self.assertEqual(3, len(line["data"]), line["data"])
        self.assertIn(str(ids[1]), line["data"])
        records = {record["id"]: record for record in map(json.loads, (text for text in line["data"] if text.startswith("{")))}
        self.assertEqual("Changed", records[ids[0]]["lastname"])
        self.assertEqual(("Nora", "+49170"), (records[str(new_id)]["firstname"], records[str(new_id)]["mobile"]))

    def test_a_download_that_is_cut_off_publishes_what_came_and_the_next_one_repairs_it(self):
        self.start_cloud(calls=0, contacts=200)
        self.cloud.fault(path="address-book-sync", nth=3, times=1, reset="in")
        phone = self.start_phone()
        line, position = phone.wait_for(full_phonebook())
        self.assertEqual(100, len(line["data"]))
        self.assertEqual(0, phone.ctl("call", "refreshPhonebookEntries").returncode)
        line, _ = phone.wait_for(full_phonebook(), after=position)
        self.assertEqual(200, len(line["data"]))
        self.assertIn("syncType=FSync", self.requests()[3]["target"])

    def test_switched_off_nothing_is_asked_for(self):
        self.start_cloud(calls=0, contacts=3)
        phone = self.start_phone(items={"ORVANE_API_SYNC_PHONEBOOK": "false"})
        self.cloud.wait_for_request("wstoken")
        self.assertEqual([], self.requests())


class HostileBooks(TelephoneCase):
    def test_records_of_wrong_types_cost_only_themselves(self):
        self.start_cloud(calls=0, contacts=3)
        self.cloud.replace_body("address-book-sync", json.dumps({
            "syncInfo": {"syncToken": "t1"},
            "records": [{"id": "text", "availability": "Alive"}, 7, None, [1], {"id": 5, "availability": 1},
                        {"id": 6, "availability": "Alive", "firstName": 12, "lastName": "Good"}]}))
        line, _ = self.start_phone().wait_for(full_phonebook())
        self.assertEqual(["6"], [json.loads(record)["id"] for record in line["data"]])

    def test_a_name_of_two_megabytes_arrives(self):
        self.start_cloud(calls=0)
        self.cloud.replace_body("address-book-sync", json.dumps({
            "syncInfo": {"syncToken": "t1"},
            "records": [{"id": 1, "availability": "Alive", "firstName": "x" * 2_000_000}]}))
        line, _ = self.start_phone(log_level=2).wait_for(full_phonebook(), timeout=30)
        self.assertEqual(2_000_000, len(json.loads(line["data"][0])["firstname"]))

    def test_ten_thousand_records_on_one_page(self):
        self.start_cloud(calls=0)
        self.cloud.replace_body("address-book-sync", json.dumps({
            "syncInfo": {"syncToken": "t1"},
            "records": [{"id": number, "availability": "Alive", "firstName": f"N{number}"} for number in range(10_000)]}))
        line, _ = self.start_phone(log_level=2).wait_for(full_phonebook(), timeout=30)
        self.assertEqual(10_000, len(line["data"]))

    def test_a_body_that_is_not_utf_8_is_refused_as_a_whole_and_the_telephone_goes_on(self):
        self.start_cloud(calls=1)
        self.cloud.replace_body("address-book-sync", b'{"syncInfo":{"syncToken":"t"},"records":['
                                b'{"id":1,"availability":"Alive","firstName":"\xff\xfe"}]}')
        phone = self.start_phone()
        phone.program.wait_for_error_line(r"handlePhonebookResponse\(\) error on line")
        self.assertTrue(phone.alive())


if __name__ == "__main__":
    unittest.main()

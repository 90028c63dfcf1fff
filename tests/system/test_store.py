"""What survives: the store of the telephone through restarts and kills."""

import random
import sqlite3
import time
import unittest

from telephone_case import TelephoneCase, full_call_log, is_item

VIEWED = "ORVANE_API_VIEWED_MISSED_CALL_IDS"


class Store(TelephoneCase):
    def viewed_calls(self):
        self.start_cloud(calls=0)
        self.ids = [self.cloud.add_call(direction="Inbound", result="Missed") for _ in range(4)]
        self.store = f"{self.directory}/store.db"

    def age(self, phone, call_id):
        result = phone.ctl("call", "ageMissedCall", f"id={call_id}")
        self.assertEqual(0, result.returncode, result.stderr)
        phone.wait_for(is_item(VIEWED))

    def is_viewed(self, phone, call_id):
        result = phone.ctl("call", "isMissedCallViewed", f"id={call_id}")
        self.assertEqual(0, result.returncode, result.stderr)
        return '"result":true' in result.stdout.replace(" ", "")

    def test_viewed_ids_survive_a_restart(self):
        self.viewed_calls()
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        self.age(phone, self.ids[0])
        phone.program.stop()
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        self.assertTrue(self.is_viewed(phone, self.ids[0]))
        self.assertFalse(self.is_viewed(phone, self.ids[1]))

    def test_viewed_ids_survive_a_kill(self):
        self.viewed_calls()
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        self.age(phone, self.ids[2])
        phone.program.kill()
        self.programs.remove(phone.program)
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        self.assertTrue(self.is_viewed(phone, self.ids[2]))

    def test_an_id_that_the_cloud_no_longer_lists_is_gone_after_a_full_sync(self):
        self.viewed_calls()
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        for call_id in self.ids[:2]:
            self.age(phone, call_id)
        phone.program.stop()
        self.cloud.delete_call(self.ids[0])
        phone = self.start_phone(store=self.store)
        phone.wait_for(full_call_log())
        self.assertFalse(self.is_viewed(phone, self.ids[0]))
        self.assertTrue(self.is_viewed(phone, self.ids[1]))

    def test_a_kill_at_any_moment_leaves_a_store_that_opens_with_the_last_items(self):
        seed = random.randrange(1 << 30)
        print(f"seed {seed}")
        moments = random.Random(seed)
        self.start_cloud(calls=0)
        self.cloud.add_call(direction="Outbound", result="Call connected", to={"phoneNumber": "+49301", "name": "A"})
        store = f"{self.directory}/store.db"
        last = None
        for _ in range(8):
            phone = self.start_phone(store=store)
            time.sleep(moments.uniform(0, 0.3))
            phone.program.kill()
            self.programs.remove(phone.program)
            written = [line for line in phone.output.since() if is_item("LAST_DIALLED_NUMBER")(line)]
            if written:
                last = written[-1]["value"]
            with sqlite3.connect(store) as database:
                self.assertEqual([("ok",)], database.execute("pragma integrity_check").fetchall())
        phone = self.start_phone(store=store, everything_on=False)
        result = phone.ctl("item", "LAST_DIALLED_NUMBER")
        self.assertEqual(0, result.returncode, result.stderr)
        self.assertIn(last or "", result.stdout)


class Deletion(TelephoneCase):
    def test_the_deletion_of_one_call_reaches_the_cloud_and_comes_back(self):
        self.start_cloud(calls=3)
        phone = self.start_phone()
        line, position = phone.wait_for(full_call_log())
        call_id = line["data"][0].split(",")[1]
        self.assertEqual(0, phone.ctl("call", "deleteCallLogEntry", f"id={call_id}").returncode)
        deletion = [request for request in self.cloud.requests() if request["method"] == "DELETE"]
        self.assertEqual([f"/{self.model}/{self.mac}/restapi/v1.0/account/~/extension/~/call-log/{call_id}"],
                         [request["target"] for request in deletion])
        self.assertNotIn(call_id, [call["id"] for call in self.cloud.calls()])
        # The deletion itself raises no event; the next full synchronisation comes without the call.
        self.assertEqual(0, phone.ctl("call", "clearSyncTokens").returncode)
        self.assertEqual(0, phone.ctl("call", "refreshCallLogEntries").returncode)
        line, _ = phone.wait_for(full_call_log(), after=position)
        self.assertEqual(2, len(line["data"]))
        self.assertNotIn(call_id, [record.split(",")[1] for record in line["data"]])

    def test_the_deletion_of_all_calls_comes_back_as_an_empty_full_sync(self):
        self.start_cloud(calls=3)
        phone = self.start_phone()
        _, position = phone.wait_for(full_call_log(lambda data: len(data) == 3))
        result = phone.ctl("call", "deleteAllCallLogEntries")
        self.assertIn("true", result.stdout)
        phone.wait_for(full_call_log(lambda data: data == []), after=position)
        self.assertEqual([], self.cloud.calls())


if __name__ == "__main__":
    unittest.main()

"""Do not disturb in both directions, and colleagues on keys."""

import unittest

from orvane_system import wait_until
from telephone_case import TelephoneCase, full_call_log, is_item

OWN = 1001
BUSY, FREE = "DoNotAcceptAnyCalls", "TakeAllCalls"


def is_lamp(uri, dnd):
    return lambda line: line == {"event": "lamp", "uri": uri, "dnd": dnd}


class PresenceCase(TelephoneCase):
    def start(self, colleagues=(), dnd=FREE, keys=(), items=None):
        data = {"accountId": 1, "devices": [{"model": self.model, "mac": self.mac, "extensionId": OWN}],
                "extensions": [{"id": OWN, "number": "100", "name": "User", "dndStatus": dnd}]
                + [{"id": colleague, "number": str(colleague), "name": f"C{colleague}"} for colleague in colleagues]}
        self.start_cloud(data=data)
        values = {"ORVANE_API_SYNC_INTERVAL": "3600", **(items or {})}
        for index, colleague in keys:
            values.update(self.key_items(index, colleague))
        return self.start_phone(items=values)

    @staticmethod
    def key_items(index, colleague):
        return {f"FUNCTION_KEY_LABEL{index}": f"C{colleague}", f"BLF_DEST{index}": f"blf{colleague}",
                f"FUNCTION_KEY_ID{index}": "59"}

    def add_key(self, phone, index, colleague):
        for name, value in self.key_items(index, colleague).items():
            self.assertEqual(0, phone.ctl("item", f"{name}={value}").returncode)

    def presence(self, extension=OWN):
        return self.cloud.admin("GET", f"presence/{extension}")["dndStatus"]

    def set_presence(self, status, extension=OWN):
        self.cloud.admin("PUT", f"presence/{extension}", {"dndStatus": status})

    def puts(self):
        return [request for request in self.cloud.requests("/presence") if request["method"] == "PUT"]

    def subscription_updates(self):
        return [frame["text"] for frame in self.cloud.admin("GET", "frames") if '"PUT"' in frame["text"]]

    def wait_for_channel(self, phone):
        phone.program.wait_for_error_line("is enabled")


class DoNotDisturb(PresenceCase):
    def test_the_switch_on_the_telephone_reaches_the_cloud_and_does_not_bounce(self):
        phone = self.start()
        self.wait_for_channel(phone)
        position = phone.output.mark()
        self.assertEqual(0, phone.ctl("call", "updateUserPresenceStatus", "newDndState=true").returncode)
        self.assertEqual(BUSY, self.presence())
        phone.wait_for(is_item("CALL_DND_ACTIVATED", "true"), after=position)
        # A status of a colleague comes behind whatever the change brought back.
        self.assertEqual(0, phone.ctl("call", "updateUserPresenceStatus", "newDndState=false").returncode)
        phone.wait_for(is_item("CALL_DND_ACTIVATED", "false"), after=position)
        self.assertEqual(2, len(self.puts()))

    def test_the_switch_in_the_cloud_reaches_the_telephone_by_event(self):
        phone = self.start()
        self.wait_for_channel(phone)
        position = phone.output.mark()
        self.set_presence(BUSY)
        phone.wait_for(is_item("CALL_DND_ACTIVATED", "true"), after=position)
        self.assertEqual([], self.puts())

    def test_the_switch_in_the_cloud_reaches_the_telephone_at_login(self):
        phone = self.start(dnd=BUSY)
        phone.wait_for(is_item("CALL_DND_ACTIVATED", "true"))

    def test_a_status_of_the_cloud_counts_when_the_feature_is_turned_on(self):
        phone = self.start(dnd=BUSY, items={"ORVANE_API_SYNC_DND": "false"})
        self.wait_for_channel(phone)
        self.assertEqual([], self.cloud.requests("/presence"))
        self.assertEqual(0, phone.ctl("configure", "ORVANE_API_SYNC_DND=true").returncode)
        phone.wait_for(is_item("CALL_DND_ACTIVATED", "true"))
        wait_until(lambda: any("presence/dnd" in frame for frame in self.subscription_updates()), what="the filter")

    def test_two_quick_switches_of_the_feature_run_one_after_the_other(self):
        phone = self.start(items={"ORVANE_API_SYNC_DND": "false"})
        self.wait_for_channel(phone)
        for value in ("true", "false", "true"):
            self.assertEqual(0, phone.ctl("configure", f"ORVANE_API_SYNC_DND={value}").returncode)
        updates = wait_until(lambda: len(self.subscription_updates()) >= 3 and self.subscription_updates(), what="three updates")
        self.assertEqual([True, False, True], ["presence/dnd" in frame for frame in updates])


class Keys(PresenceCase):
    def test_twelve_keys_two_of_them_on_one_colleague(self):
        colleagues = list(range(3001, 3012))
        keys = list(zip((100, 101, 102, 103, 104, 105, 200, 201, 300, 301, 1015), colleagues)) + [(500, 3001)]
        phone = self.start(colleagues=colleagues, keys=keys)
        for colleague in colleagues:
            phone.wait_for(is_lamp(f"blf{colleague}", False))
        self.wait_for_channel(phone)
        position = phone.output.mark()
        self.set_presence(BUSY, 3005)
        phone.wait_for(is_lamp("blf3005", True), after=position)
        self.assertEqual(len(colleagues), len([r for r in self.cloud.requests("/presence") if "/~/presence" not in r["target"]]))

    def test_a_key_that_is_taken_away_while_lit_goes_out(self):
        phone = self.start(colleagues=[3001], keys=[(100, 3001)])
        self.wait_for_channel(phone)
        self.set_presence(BUSY, 3001)
        phone.wait_for(is_lamp("blf3001", True))
        self.assertEqual(0, phone.ctl("item", "FUNCTION_KEY_ID100=1").returncode)
        phone.wait_for(is_lamp("3001", False))

    def test_the_first_key_and_the_last_change_the_subscription_and_a_second_does_not(self):
        phone = self.start(colleagues=[3001, 3002])
        self.wait_for_channel(phone)
        self.add_key(phone, 100, 3001)
        self.assertEqual(1, len(wait_until(self.subscription_updates, what="an update")))
        self.assertIn("presence/line/presence/dnd", self.subscription_updates()[0])
        self.add_key(phone, 101, 3002)
        phone.wait_for(is_lamp("blf3002", False))
        self.assertEqual(0, phone.ctl("item", "FUNCTION_KEY_ID100=1").returncode)
        self.assertEqual(1, len(self.subscription_updates()))
        self.assertEqual(0, phone.ctl("item", "FUNCTION_KEY_ID101=1").returncode)
        wait_until(lambda: len(self.subscription_updates()) == 2, what="a second update")
        self.assertNotIn("presence/line", self.subscription_updates()[1])


if __name__ == "__main__":
    unittest.main()

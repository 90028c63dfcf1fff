"""Shared lines and voicemail: granted by the cloud, matched by overview keys, withdrawn when they go."""

import unittest

from orvane_system import wait_until
from telephone_case import TelephoneCase, full_call_log, incremental_call_log, is_item

OWN, COLLEAGUE = 1001, 1002
LINES = {2001: "Sales", 2002: "Service", 2003: "Night"}


def call(call_id, **members):
    return {"id": call_id, "direction": "Inbound", "result": "Missed", "telephonySessionId": f"s-{call_id}",
            "from": {"phoneNumber": "+49301", "name": "Anna"}, "to": {"phoneNumber": "+49302", "name": "Line"}, **members}


class LineCase(TelephoneCase):
    def start(self, model="KD24", own_calls=(), line_calls=None, settings=None, items=None, **options):
        self.model = model
        line_calls = line_calls or {}
        data = {"accountId": 1, "settings": {"grantsPerPage": 2, **(settings or {})},
                "devices": [{"model": model, "mac": self.mac, "extensionId": OWN}],
                "extensions": [{"id": OWN, "number": "100", "name": "User", "grants": list(LINES), "calls": list(own_calls)}]
                + [{"id": line, "number": str(line), "name": name, "calls": list(line_calls.get(line, ()))}
                   for line, name in LINES.items()]}
        self.start_cloud(data=data)
        return self.start_phone(items={"ORVANE_API_SYNC_INTERVAL": "3600", **(items or {})}, **options)

    def overview(self, phone, number, name):
        self.assertEqual(0, phone.ctl("overview", f"{number}@sip.example", name).returncode)

    def line_requests(self, line):
        return self.cloud.requests(f"/extension/{line}/call-log-sync")


class Discovery(LineCase):
    def test_lines_on_two_pages_are_matched_by_overview_keys(self):
        phone = self.start(line_calls={2001: [call("a")], 2003: [call("b")]})
        _, position = phone.wait_for(full_call_log())
        self.assertEqual(["/grant", "/grant?page=2"],
                         [request["target"].split("/~")[-1] for request in self.cloud.requests("/grant")])
        self.assertEqual([], self.cloud.requests("/extension/2001/call-log-sync"))
        self.overview(phone, "+49401", "Sales")
        line, position = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.assertTrue(line["data"][0].endswith(",Line,+49401}"), line["data"])
        self.overview(phone, "+49403", "Night")
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.assertIn(",b,", line["data"][0])
        self.assertEqual([], self.line_requests(2002))

    def test_a_key_that_comes_before_its_line_is_not_remembered(self):
        phone = self.start(line_calls={2001: [call("a")]})
        self.cloud.admin("PUT", "grants", [])
        _, position = phone.wait_for(full_call_log())
        self.assertEqual(0, phone.ctl("devices-changed").returncode)
        self.overview(phone, "+49401", "Sales")
        self.cloud.admin("PUT", "grants", list(LINES))
        self.assertEqual(0, phone.ctl("system-status", "Enabled").returncode)
        self.assertEqual([], self.line_requests(2001))
        self.overview(phone, "+49401", "Sales")
        self.assertEqual(1, len(self.line_requests(2001)))

    def test_line_filters_enter_and_leave_the_subscription(self):
        phone = self.start()
        phone.program.wait_for_error_line("is enabled")
        self.cloud.admin("PUT", "grants", [2001])
        self.assertEqual(0, phone.ctl("devices-changed").returncode)
        update = wait_until(lambda: [frame["text"] for frame in self.cloud.admin("GET", "frames")
                                     if '"PUT"' in frame["text"]], what="the update of the subscription")[0]
        self.assertIn("/extension/2001/message-store", update)
        self.assertNotIn("/extension/2002/message-store", update)


class CallLogs(LineCase):
    def test_a_line_is_followed_in_the_cycle_of_the_user(self):
        phone = self.start(items={"ORVANE_API_SYNC_INTERVAL": "30"}, time_scale=15)
        _, position = phone.wait_for(full_call_log())
        self.overview(phone, "+49401", "Sales")
        self.cloud.admin("POST", "calls?extension=2001", call("new"))
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position, timeout=20)
        self.assertIn(",new,", line["data"][0])

    def test_a_full_synchronisation_of_the_user_alone_leaves_the_calls_of_lines_out(self):
        phone = self.start(own_calls=[call("own")], line_calls={2001: [call("a")]}, time_scale=15,
                           items={"ORVANE_API_SYNC_INTERVAL": "30"})
        _, position = phone.wait_for(full_call_log())
        self.overview(phone, "+49401", "Sales")
        _, position = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.cloud.fault(path="/extension/~/call-log-sync", status=500)
        line, position = phone.wait_for(full_call_log(), after=position, timeout=20)
        self.assertEqual(["own"], [record.split(",")[1] for record in line["data"]])
        self.assertEqual(0, phone.ctl("call", "clearSyncTokens").returncode)
        line, _ = phone.wait_for(full_call_log(), after=position, timeout=20)
        self.assertEqual({"own", "a"}, {record.split(",")[1] for record in line["data"]})

    def test_a_call_in_both_logs_counts_for_the_user_only(self):
        phone = self.start(own_calls=[call("both")], line_calls={2001: [call("both"), call("only")]})
        line, position = phone.wait_for(full_call_log())
        self.assertEqual(1, len(line["data"]))
        self.overview(phone, "+49401", "Sales")
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.assertEqual(["only"], [record.split(",")[1] for record in line["data"]])

    def test_a_delegated_call_counts_on_a_line_and_not_for_the_user(self):
        delegated = call("d", delegate={"name": "Boss"})
        phone = self.start(own_calls=[delegated], line_calls={2001: [delegated]})
        line, position = phone.wait_for(full_call_log())
        self.assertEqual([], line["data"])
        self.overview(phone, "+49401", "Sales")
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.assertEqual(["d"], [record.split(",")[1] for record in line["data"]])

    def test_a_line_that_goes_away_is_withdrawn_record_by_record(self):
        phone = self.start(line_calls={2001: [call("a"), call("b")]})
        _, position = phone.wait_for(full_call_log())
        self.overview(phone, "+49401", "Sales")
        _, position = phone.wait_for(incremental_call_log(lambda data: len(data) == 2), after=position)
        self.cloud.admin("PUT", "grants", [2002, 2003])
        self.assertEqual(0, phone.ctl("devices-changed").returncode)
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position)
        self.assertEqual({"a", "b"}, set(line["data"]))

    def test_a_line_that_goes_away_during_its_own_request(self):
        phone = self.start(line_calls={2001: [call("a")]})
        phone.wait_for(full_call_log())
        self.overview(phone, "+49401", "Sales")
        self.cloud.hold_requests("/extension/2001/call-log-sync")
        self.assertEqual(0, phone.ctl("call", "clearSyncTokens").returncode)
        self.assertEqual(0, phone.ctl("call", "refreshCallLogEntries").returncode)
        self.cloud.wait_for_request("/extension/2001/call-log-sync", count=2)
        self.cloud.admin("PUT", "grants", [])
        self.cloud.release_requests()
        self.assertEqual(0, phone.ctl("devices-changed").returncode)
        self.assertTrue(phone.alive())
        self.assertEqual('{"result":true}', phone.ctl("call", "isRunning").stdout.strip())


class Voicemail(LineCase):
    def mwi(self, phone, uri, waiting):
        result = phone.ctl("call", "sipVoicemailStatusProcessed", f"lineURI={uri}", "lineName=Name",
                           f"mwiIndicated={str(waiting).lower()}")
        return result.stdout.strip()

    def test_message_waiting_of_the_user_and_of_a_line(self):
        phone = self.start()
        phone.wait_for(full_call_log())
        phone.program.wait_for_error_line("is enabled")
        self.overview(phone, "+49401", "Sales")
        position = phone.output.mark()
        self.assertEqual('{"result":true}', self.mwi(phone, "+49100", True))
        line, position = phone.wait_for(lambda line: line.get("event") == "orvaneVoicemail" and line["data"], after=position)
        self.assertEqual({"~"}, set(line["data"]))
        self.assertEqual(-1, line["data"]["~"]["unreadVoicemailMessageCount"])
        self.mwi(phone, "+49401", True)
        line, position = phone.wait_for(lambda line: line.get("event") == "orvaneVoicemail" and "2001" in line["data"], after=position)
        self.assertEqual(("+49401", "Sales"), (line["data"]["2001"]["number"], line["data"]["2001"]["name"]))
        self.mwi(phone, "+49100", False)
        self.mwi(phone, "+49401", False)
        phone.wait_for(is_item("missed-logg-count", "-1"))
        phone.wait_for(is_item("missed-logg-count", "0"), after=position)
        phone.wait_for(lambda line: line.get("event") == "orvaneVoicemail" and line["data"] == {}, after=position)

    def test_a_kl_model_refuses(self):
        phone = self.start(model="KL20")
        phone.wait_for(full_call_log())
        self.assertEqual('{"result":false}', self.mwi(phone, "+49100", True))


if __name__ == "__main__":
    unittest.main()

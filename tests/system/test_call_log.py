"""Login and call log: the telephone against the simulator, over real TLS."""

import unittest

from telephone_case import TelephoneCase, full_call_log, incremental_call_log, is_token_failure


class LoginAndFullSync(TelephoneCase):
    def test_logs_in_by_model_and_mac_and_publishes_the_whole_call_log(self):
        self.start_cloud(calls=40)
        phone = self.start_phone()
        line, _ = phone.wait_for(full_call_log(), what="the full call log")
        self.assertEqual(40, len(line["data"]))
        self.assertTrue(all(record.startswith("{") and record.endswith("}") for record in line["data"]))
        token, extension = self.cloud.requests("/auth/token")[0], self.cloud.requests("/extension/~")[0]
        self.assertEqual(f"/{self.model}/{self.mac}/auth/token", token["target"])
        self.assertNotIn("authorization", token["headers"])
        self.assertTrue(extension["headers"]["authorization"].startswith("Bearer "))

    def test_all_requests_of_a_login_go_over_one_connection(self):
        self.start_cloud(calls=5)
        phone = self.start_phone()
        phone.wait_for(full_call_log())
        self.assertEqual(1, len({request["connection"] for request in self.cloud.requests()}))

    def test_the_last_dialled_number_is_written(self):
        self.start_cloud(calls=0)
        self.cloud.add_call(direction="Outbound", result="Call connected", to={"phoneNumber": "+4930111", "name": "A"})
        phone = self.start_phone()
        line, _ = phone.wait_for(lambda line: line.get("event") == "item" and line["name"] == "LAST_DIALLED_NUMBER")
        self.assertEqual("+4930111", line["value"])

    def test_an_unknown_device_gets_no_data_and_the_observer_is_told(self):
        self.start_cloud(calls=5)
        phone = self.start_phone(mac="FFFFFFFFFFFF")
        phone.wait_for(is_token_failure, what="the token failure")
        self.assertFalse([line for line in phone.output.since() if line.get("event") == "orvaneFullSync"])


class IncrementalSync(TelephoneCase):
    def test_polling_brings_one_new_one_changed_and_one_deleted_call_as_three_entries(self):
        self.start_cloud(calls=6)
        phone = self.start_phone(time_scale=30)
        line, position = phone.wait_for(full_call_log())
        ids = [record.split(",")[1] for record in line["data"]]
        self.cloud.hold_requests()
        new_id = self.cloud.add_call(direction="Inbound", result="Missed", **{"from": {"phoneNumber": "+4930222", "name": "New"}})
        self.cloud.change_call(ids[0], duration=4242)
        self.cloud.delete_call(ids[1])
        self.cloud.release_requests()
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position, timeout=20)
        self.assertEqual(3, len(line["data"]), line["data"])
        self.assertIn(ids[1], line["data"])
        self.assertEqual(1, sum(f",{new_id}," in entry for entry in line["data"]))
        self.assertEqual(1, sum(f",{ids[0]}," in entry and "1:10:42" in entry for entry in line["data"]))

    def test_polling_uses_the_token_of_the_last_answer(self):
        self.start_cloud(calls=3)
        phone = self.start_phone(time_scale=30)
        _, position = phone.wait_for(full_call_log())
        _, position = phone.wait_for(incremental_call_log(), after=position, timeout=20)
        phone.wait_for(incremental_call_log(), after=position, timeout=20)
        syncs = [request["target"] for request in self.cloud.requests("call-log-sync")]
        self.assertIn("syncType=FSync", syncs[0])
        self.assertTrue(all("syncType=ISync" in target and "syncToken=" in target for target in syncs[1:]), syncs)


class BadNetwork(TelephoneCase):
    def test_too_many_requests_with_a_short_wait_is_waited_out(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=1, status=429, retryAfter=1)
        phone = self.start_phone()
        phone.wait_for(full_call_log(lambda data: len(data) == 4))
        times = [request["time"] for request in self.cloud.requests("call-log-sync")]
        self.assertEqual(2, len(times))
        self.assertGreaterEqual(times[1] - times[0], 0.9)

    def test_three_redirects_are_followed(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=3, redirect="same")
        phone = self.start_phone()
        phone.wait_for(full_call_log(lambda data: len(data) == 4))
        self.assertEqual(4, len(self.cloud.requests("call-log-sync")))

    def test_a_fourth_redirect_fails(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=4, redirect="same")
        phone = self.start_phone(log_level=2)
        phone.wait_for(incremental_call_log(lambda data: not data), what="an empty batch for a failed request")
        phone.program.wait_for_error_line(r"connectionHandler\(\) too many redirects")
        self.assertEqual(4, len(self.cloud.requests("call-log-sync")))

    def test_a_connection_that_the_server_closes_between_polls_is_replaced_unnoticed(self):
        self.start_cloud(calls=4)
        phone = self.start_phone(time_scale=15)
        _, position = phone.wait_for(full_call_log())
        self.cloud.close_connections()
        call = self.cloud.add_call(direction="Inbound", result="Missed")
        line, _ = phone.wait_for(incremental_call_log(lambda data: data), after=position, timeout=20)
        self.assertEqual([call], [record.split(",")[1] for record in line["data"]])
        self.assertGreaterEqual(len({request["connection"] for request in self.cloud.requests("call-log-sync")}), 2)

    def test_a_failed_token_is_asked_for_again_by_the_token_timer(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="/auth/token", times=1, status=500)
        phone = self.start_phone(time_scale=200)
        _, position = phone.wait_for(is_token_failure)
        phone.wait_for(full_call_log(lambda data: len(data) == 4), after=position, timeout=20)
        self.assertEqual(2, len(self.cloud.requests("/auth/token")))

    def test_a_body_of_three_mebibytes_arrives_whole(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=1, hugeBodyBytes=3 * 1024 * 1024)
        phone = self.start_phone()
        phone.wait_for(full_call_log(lambda data: len(data) == 4), timeout=30)

    def test_a_reset_in_the_middle_of_a_body_costs_one_synchronisation(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=1, reset="in")
        phone = self.start_phone(time_scale=30)
        _, position = phone.wait_for(incremental_call_log(lambda data: not data))
        phone.wait_for(full_call_log(lambda data: len(data) == 4), after=position, timeout=20)

    def test_records_whose_keys_stand_in_nested_objects_first_do_no_harm(self):
        self.start_cloud(calls=4)
        self.cloud.fault(path="call-log-sync", times=1, nestedFirst=True)
        phone = self.start_phone(time_scale=30)
        phone.wait_for(lambda line: line.get("event") in ("orvaneFullSync", "orvaneIncrementalSync"))
        self.assertTrue(phone.alive())


if __name__ == "__main__":
    unittest.main()

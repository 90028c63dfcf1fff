"""Other processes: remote calls and observers, contacts from the telephone, and everything that changes around it."""

import json
import os
import random
import signal
import socket
import threading
import time
import unittest

from orvane_system import BIN_DIR, Program, wait_until
from telephone_case import TelephoneCase, full_call_log, full_phonebook, incremental_phonebook, incremental_call_log


def is_user_event(message):
    return lambda line: line.get("event") == "informUserEvent" and line["msg"] == message


class RemoteCase(TelephoneCase):
    def observer(self, phone):
        program = Program([BIN_DIR / "orvane-ctl", "--control", phone.control, "observe"], self.directory, "observer")
        self.programs.insert(0, program)
        program.output.wait_for(lambda line: line == {"event": "subscribed"}, what="the subscription")
        return program

    def connect_raw(self, phone):
        client = socket.socket(socket.AF_UNIX)
        client.settimeout(20)
        client.connect(phone.control)
        self.addCleanup(client.close)
        return client

    def assert_answers(self, phone):
        self.assertEqual('{"result":true}', phone.ctl("call", "isRunning").stdout.strip())


class Observers(RemoteCase):
    def test_a_late_observer_is_given_all_data_and_then_the_changes(self):
        self.start_cloud(calls=3, contacts=2)
        phone = self.start_phone(time_scale=15)
        phone.wait_for(full_phonebook())
        observer = self.observer(phone)
        observer.output.wait_for(full_call_log(lambda data: len(data) == 3))
        _, position = observer.output.wait_for(full_phonebook(lambda data: len(data) == 2))
        call = self.cloud.add_call(result="Missed")
        line, _ = observer.output.wait_for(incremental_call_log(lambda data: data), after=position, timeout=20)
        self.assertEqual(call, line["data"][0].split(",")[1])

    def test_an_observer_unsubscribes_on_a_signal(self):
        self.start_cloud(calls=1)
        phone = self.start_phone(log_level=6)
        phone.wait_for(full_call_log())
        observer = self.observer(phone)
        observer.process.send_signal(signal.SIGINT)
        self.assertEqual(0, observer.wait_for_end())
        phone.program.wait_for_error_line(r"unsubscribe\(\) removed observer")

    def test_an_observer_ends_with_the_telephone(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.wait_for(full_call_log())
        observer = self.observer(phone)
        phone.program.stop()
        self.assertEqual(1, observer.wait_for_end())

    def test_an_observer_that_dies_or_hangs_delays_nothing(self):
        self.start_cloud(calls=5)
        phone = self.start_phone(time_scale=30)
        _, position = phone.wait_for(full_call_log())
        dead, hanging = self.observer(phone), self.observer(phone)
        dead.kill()
        os.kill(hanging.process.pid, signal.SIGSTOP)
        try:
            for _ in range(3):
                call = self.cloud.add_call(result="Missed")
                line, position = phone.wait_for(
                    lambda line: line.get("event", "").endswith("Sync") and any(f",{call}," in record for record in line["data"]),
                    after=position, timeout=10)
        finally:
            os.kill(hanging.process.pid, signal.SIGCONT)
        self.assert_answers(phone)


class Calls(RemoteCase):
    def test_two_hundred_calls_of_four_clients_are_answered_while_a_sync_runs(self):
        self.start_cloud(calls=40)
        phone = self.start_phone(time_scale=60)
        phone.wait_for(full_call_log())
        failures = []

        def ask(number):
            client = self.connect_raw(phone)
            stream = client.makefile("rw", encoding="utf-8", newline="\n")
            for sequence in range(50):
                method = {"name": "isMissedCallViewed", "type": 0, "parameters":
                          [{"name": "id", "kind": "string", "direction": 0, "value": f"{number}-{sequence}"}]}
                stream.write(json.dumps({"seq": sequence, "method": method}) + "\n")
                stream.flush()
                reply, end = json.loads(stream.readline()), json.loads(stream.readline())
                if reply["method"]["parameters"][0]["value"] is not False or end != {"seq": sequence, "end": True}:
                    failures.append((reply, end))

        clients = [threading.Thread(target=ask, args=(number,)) for number in range(4)]
        for client in clients:
            client.start()
        for client in clients:
            client.join(60)
        self.assertEqual([], failures)
        self.assertFalse(any(client.is_alive() for client in clients))

    def test_hostile_messages_cost_an_error_line_and_nothing_else(self):
        self.start_cloud(calls=1)
        phone = self.start_phone(log_level=2)
        phone.wait_for(full_call_log())
        wait_until(lambda: "true" in phone.ctl("call", "isRunning").stdout, what="the login")
        for number, message in enumerate((b'{"seq":1,"method":{"na', bytes(range(256)) * 40 + b"\n",
                                          b'{"seq":1,"raw":"' + b"x" * 10_000_000 + b'"}\n', b"[]\n")):
            with self.subTest(number=number):
                before = len(phone.program.errors())
                client = self.connect_raw(phone)
                try:
                    client.sendall(message)
                    client.shutdown(socket.SHUT_WR)
                except OSError:
                    pass  # the telephone has dropped the connection meanwhile
                wait_until(lambda: len(phone.program.errors()) > before, what="an error line")
                self.assert_answers(phone)

    def test_a_message_that_nests_too_deep_is_refused_and_the_telephone_lives(self):
        self.start_cloud(calls=1)
        phone = self.start_phone(log_level=2)
        nested = "[" * 100_000 + "]" * 100_000
        for message in (f'{{"seq":1,"method":{nested}}}', f'{{"seq":1,"command":"item","name":{nested}}}'):
            client = self.connect_raw(phone)
            client.sendall(message.encode() + b"\n")
            self.assertEqual({"error": "the message cannot be read"}, json.loads(client.makefile().readline()))
        raw = '{"name":"isRunning","type":0,"parameters":' + "[" * 50_000 + "]" * 50_000 + "}"
        self.assertEqual("{}", phone.ctl("raw", raw).stdout.strip())
        self.assertTrue(phone.alive())

    def test_a_number_that_does_not_fit_is_refused(self):
        self.start_cloud(calls=1)
        phone = self.start_phone(log_level=2)
        client = self.connect_raw(phone)
        stream = client.makefile("rw", encoding="utf-8", newline="\n")

        def answer(message):
            stream.write(message + "\n")
            stream.flush()
            return json.loads(stream.readline())

        status = '{"seq":%s,"command":"item","name":"SERVER_TYPE"}'
        for sequence in (9223372036854775807, -9223372036854775808):
            self.assertEqual(sequence, answer(status % sequence)["seq"])
        for sequence in (9223372036854775808, 18446744073709551615, "1e3", 10 ** 30):
            self.assertEqual({"error": "the message cannot be read"}, answer(status % sequence))
        overview = ('{"seq":1,"command":"overview","uri":"a@b","description":"A","visible":true,'
                    '"position":%s,"alert":%s}')
        for position, alert in ((2147483647, 0), (-2147483648, 2)):
            self.assertEqual({"seq": 1, "reply": {}}, answer(overview % (position, alert)))
        for position, alert in ((2147483648, 0), (99999999999, 0), (18446744073709551615, 0), (1.5, 0), ("true", 0),
                                (1, 3), (1, -1), (1, 99), (1, 4294967297)):
            self.assertEqual({"seq": 1, "error": "the command cannot be read"}, answer(overview % (position, alert)))

    def test_a_text_that_does_not_decode_gets_an_end_and_no_reply(self):
        self.start_cloud(calls=1)
        phone = self.start_phone(log_level=2)
        phone.wait_for(full_call_log())
        self.assertEqual("{}", phone.ctl("raw", "{]").stdout.strip())
        phone.program.wait_for_error_line(r"Orvane Service Invoker .* handleMessage\(\) ovSvc")
        self.assertEqual("{}", phone.ctl("call", "noSuchMethod").stdout.strip())
        phone.program.wait_for_error_line("unknown request='noSuchMethod'")


class Contacts(RemoteCase):
    XML = "<contact><firstname>Nora</firstname><lastname>Neu</lastname><mobile>+49170</mobile>{}</contact>"

    def logged_in(self, **cloud):
        self.start_cloud(calls=0, **cloud)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        return phone

    def test_a_contact_that_is_added_reaches_the_cloud_and_the_observers(self):
        phone = self.logged_in(contacts=2)
        observer = self.observer(phone)
        self.assertEqual(0, phone.ctl("call", "addNewContact", "xmlData=" + self.XML.format("")).returncode)
        phone.wait_for(is_user_event("OV.Copied.contact.OK"))
        line, _ = observer.output.wait_for(incremental_phonebook(lambda data: len(data) == 1))
        record = json.loads(line["data"][0])
        self.assertEqual(("Nora", "Neu", "+49170"), (record["firstname"], record["lastname"], record["mobile"]))
        self.assertIn(int(record["id"]), [contact["id"] for contact in self.cloud.contacts()])

    def test_a_contact_is_edited_and_deleted(self):
        phone = self.logged_in(contacts=2)
        line, position = phone.wait_for(full_phonebook())
        contact_id = json.loads(line["data"][0])["id"]
        edited = self.XML.format(f"<id>{contact_id}</id>")
        self.assertEqual(0, phone.ctl("call", "updateEditedContact", "xmlData=" + edited).returncode)
        line, position = phone.wait_for(incremental_phonebook(), after=position)
        self.assertEqual("Neu", json.loads(line["data"][0])["lastname"])
        self.assertEqual(0, phone.ctl("call", "deleteSingleContact", f"id={contact_id}").returncode)
        line, _ = phone.wait_for(incremental_phonebook(), after=position)
        self.assertEqual([contact_id], line["data"])
        self.assertEqual(1, len(self.cloud.contacts()))

    def test_at_the_limit_nothing_is_sent(self):
        phone = self.logged_in(contacts=250)
        phone.wait_for(full_phonebook(lambda data: len(data) == 250))
        phone.ctl("call", "addNewContact", "xmlData=" + self.XML.format(""))
        phone.program.wait_for_error_line("max number of contacts exceeded")
        self.assertEqual(250, len(self.cloud.contacts()))

    def test_a_refusal_is_told_and_an_unreadable_answer_is_success(self):
        phone = self.logged_in()
        self.cloud.fault(path="address-book/contact", times=1, status=500)
        phone.ctl("call", "addNewContact", "xmlData=" + self.XML.format(""))
        phone.wait_for(is_user_event("OV.Copied.contact.ERROR"))
        self.cloud.replace_body("address-book/contact", "{")
        phone.ctl("call", "addNewContact", "xmlData=" + self.XML.format(""))
        phone.wait_for(is_user_event("OV.Copied.contact.OK"))


class Changes(RemoteCase):
    def test_a_group_that_only_changes_the_interval_changes_nothing_else(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        self.assertEqual(0, phone.ctl("configure", "ORVANE_API_SYNC_INTERVAL=45").returncode)
        self.assert_answers(phone)
        self.assertEqual(1, len(self.cloud.requests("/auth/token")))

    def test_the_call_log_is_switched_off_and_on(self):
        self.start_cloud(calls=3)
        phone = self.start_phone()
        _, position = phone.wait_for(full_call_log(lambda data: len(data) == 3))
        phone.program.wait_for_error_line("is enabled")
        self.assertEqual(0, phone.ctl("configure", "ORVANE_API_SYNC_CALL_LOG=false").returncode)
        _, position = phone.wait_for(full_call_log(lambda data: data == []), after=position)
        wait_until(lambda: "true" in phone.ctl("call", "isRunning").stdout, what="the new login")
        self.assertEqual(0, phone.ctl("configure", "ORVANE_API_SYNC_CALL_LOG=true").returncode)
        phone.wait_for(full_call_log(lambda data: len(data) == 3), after=position)

    def test_a_server_that_is_taken_away_leaves_the_service_deconfigured(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        self.assertEqual(0, phone.ctl("configure", "ORVANE_API_SERVER_ADDRESS=").returncode)
        self.assertIn("false", phone.ctl("call", "isRunning").stdout)
        phone.program.wait_for_error_line(r"OUT m_state\[DECONFIGURED\]")

    def test_the_server_type_stops_the_service(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        self.assertEqual(0, phone.ctl("item", "SERVER_TYPE=8").returncode)
        wait_until(lambda: "false" in phone.ctl("call", "isRunning").stdout, what="the stop")

    def test_a_reset_clears_the_configuration(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        self.assertEqual(0, phone.ctl("reset-user-data").returncode)
        items = json.loads(phone.ctl("status").stdout)["items"]
        self.assertEqual(("", "false", "60"), (items["ORVANE_API_SERVER_ADDRESS"], items["ORVANE_API_SYNC_CALL_LOG"],
                                                items["ORVANE_API_SYNC_INTERVAL"]))
        phone.wait_for(lambda line: line.get("event") == "securityLog" and "Reseting user data" in line["text"])

    def test_another_user_leaves_nothing_of_the_first_one(self):
        self.start_cloud(calls=4, contacts=3)
        phone = self.start_phone()
        phone.program.wait_for_error_line("is enabled")
        observer = self.observer(phone)
        observer.output.wait_for(full_phonebook())
        other = next(device["extensionId"] for device in self.cloud.admin("GET", "devices")
                     if device["extensionId"] != self.cloud.extension)
        self.cloud.admin("PATCH", f"devices/{self.model}/{self.mac}", {"extensionId": other})
        position = observer.output.mark()
        self.assertEqual(0, phone.ctl("call", "reloadAllData").returncode)
        _, position = observer.output.wait_for(full_call_log(lambda data: data == []), after=position)
        observer.output.wait_for(full_phonebook(lambda data: data == []), after=position - 1)
        wait_until(lambda: len(self.cloud.requests("call-log-sync")) >= 3, what="the other user's call log")
        expected = {call["id"] for call in self.cloud.admin("GET", f"calls?extension={other}")}
        published = [line["data"] for line in observer.output.since(position) if full_call_log()(line)]
        self.assertTrue(all({record.split(",")[1] for record in data} <= expected for data in published), published)

    def test_a_network_that_flaps_ends_connected_subscribed_and_equal_with_the_cloud(self):
        seed = random.randrange(1 << 30)
        print(f"seed {seed}")
        moments = random.Random(seed)
        self.start_cloud(calls=5)
        phone = self.start_phone(time_scale=20, log_level=4)
        for _ in range(50):
            time.sleep(moments.uniform(0, 0.12))
            self.assertEqual(0, phone.ctl("interface", "down").returncode)
            time.sleep(moments.uniform(0, 0.06))
            self.assertEqual(0, phone.ctl("interface", "up").returncode)
        wait_until(lambda: "true" in phone.ctl("call", "isRunning").stdout, 60, "a login")
        call = self.cloud.add_call(result="Missed")
        phone.wait_for(lambda line: line.get("event", "").endswith("Sync") and line["type"] == 0
                       and any(f",{call}," in record for record in line["data"]), timeout=60)
        # The first look at the cloud may be an incremental one: what the telephone holds is put together from all.
        held = {}
        for line in phone.output.since():
            if line.get("event") in ("orvaneFullSync", "orvaneIncrementalSync") and line["type"] == 0:
                held = {} if line["event"] == "orvaneFullSync" else held
                for record in line["data"]:
                    held.update({record.split(",")[1]: record}) if record.startswith("{") else held.pop(record, None)
        self.assertEqual({call["id"] for call in self.cloud.calls()}, set(held))
        threads = os.listdir(f"/proc/{phone.program.process.pid}/task")
        self.assertLess(len(threads), 16, threads)


if __name__ == "__main__":
    unittest.main()

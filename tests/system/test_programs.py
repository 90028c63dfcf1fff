"""The programs as a person runs them: bad input, signals, --once."""

import contextlib
import os
import signal
import socket
import stat
import subprocess
import time
import unittest

from orvane_system import BIN_DIR, PATIENCE, run
from telephone_case import TelephoneCase, full_call_log, is_token_failure, make_authority


class BadInput(TelephoneCase):
    def setUp(self):
        super().setUp()
        self.ca = make_authority(self.directory)

    def assert_bad_usage(self, arguments, *words):
        result = run(arguments)
        self.assertEqual(2, result.returncode, result.stderr)
        self.assertEqual(1, len(result.stderr.strip().splitlines()), result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)

    def phone(self, *arguments, ca=None):
        return [BIN_DIR / "orvane-phone", "--ca", ca or self.ca, "--model", "KD24", "--mac", "1", *arguments]

    def test_an_unknown_item(self):
        self.assert_bad_usage(self.phone("--set", "NO_SUCH_ITEM=1"), "NO_SUCH_ITEM")

    def test_an_item_without_a_value(self):
        self.assert_bad_usage(self.phone("--set", "SERVER_TYPE"), "SERVER_TYPE")

    def test_a_certificate_file_that_is_not_there(self):
        self.assert_bad_usage(self.phone(ca=f"{self.directory}/missing.pem"), "missing.pem")

    def test_a_file_that_holds_no_certificate(self):
        empty = f"{self.directory}/empty.pem"
        with open(empty, "w") as file:
            file.write("not a certificate\n")
        self.assert_bad_usage(self.phone(ca=empty), "empty.pem")

    def test_a_server_without_tls(self):
        self.assert_bad_usage(self.phone("--server", "http://127.0.0.1:1"), "http")

    def test_a_server_with_a_path(self):
        for path in ("/some/path", "/some/path?x", "?x", "//"):
            self.assert_bad_usage(self.phone("--server", "https://127.0.0.1:1" + path), "--server", "host")

    def test_a_trailing_slash_of_a_server_is_ignored(self):
        result = run(self.phone("--server", "https://127.0.0.1:1/", "--service", f"{self.directory}/none.so"))
        self.assertIn("none.so", result.stderr)
        self.assertNotIn("--server", result.stderr)

    def test_options_that_name_no_file(self):
        for option in ("--cert", "--key", "--service"):
            self.assert_bad_usage(self.phone(option, ""), option)
        arguments = self.phone()
        arguments[arguments.index("--ca") + 1] = ""
        self.assert_bad_usage(arguments, "--ca")

    def test_an_unknown_option(self):
        self.assert_bad_usage(self.phone("--no-such-option"), "--no-such-option")
        self.assert_bad_usage([BIN_DIR / "orvane-phone", "--no-such-option"], "--no-such-option")

    def test_an_unknown_command(self):
        for argument in ("bogus", "--bogus"):
            self.assert_bad_usage([BIN_DIR / "orvane-ctl", argument], argument)
        self.assert_bad_usage([BIN_DIR / "orvane-ctl", "overview", "--bogus"], "--bogus")

    def test_a_missing_command(self):
        self.assert_bad_usage([BIN_DIR / "orvane-ctl"], "A subcommand is required")

    def test_a_time_limit_that_is_none(self):
        for limit in ("nan", "-nan", "0", "inf", "x"):
            self.assert_bad_usage([BIN_DIR / "orvane-ctl", "--timeout", limit, "status"], "--timeout")

    def test_a_log_level_out_of_range(self):
        self.assert_bad_usage(self.phone("--log-level", "9"))

    def test_a_time_scale_that_is_no_factor(self):
        self.assert_bad_usage(self.phone("--time-scale", "0"))

    def test_a_service_library_that_is_not_there(self):
        self.assert_bad_usage(self.phone("--service", f"{self.directory}/none.so"), "none.so")

    def test_a_store_that_is_no_store(self):
        store = f"{self.directory}/store"
        with open(store, "w") as file:
            file.write("this is no database" * 100)
        result = run(self.phone("--store", store))
        self.assertEqual(2, result.returncode, result.stderr)
        self.assertIn("store", result.stderr)

    def test_a_malformed_account_file(self):
        data = f"{self.directory}/account.json"
        with open(data, "w") as file:
            file.write('{"calls": [')
        self.assert_bad_usage([BIN_DIR / "orvane-cloud", "--listen", "127.0.0.1:0", "--admin", "127.0.0.1:0",
                               "--tls-dir", self.directory, "--data", data], "account.json")

    def test_a_port_in_use(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            self.assert_bad_usage([BIN_DIR / "orvane-cloud", "--listen", f"127.0.0.1:{taken.getsockname()[1]}",
                                   "--admin", "127.0.0.1:0", "--tls-dir", self.directory])

    def test_a_control_program_without_a_telephone(self):
        result = run([BIN_DIR / "orvane-ctl", "--control", f"{self.directory}/none.sock", "status"])
        self.assertEqual(1, result.returncode)
        self.assertEqual(1, len(result.stderr.strip().splitlines()), result.stderr)

    def test_a_control_program_gives_a_telephone_up_that_takes_no_client_in_time(self):
        path = f"{self.directory}/full.sock"
        with socket.socket(socket.AF_UNIX) as listener, contextlib.ExitStack() as clients:
            listener.bind(path)
            listener.listen(0)
            with contextlib.suppress(BlockingIOError):
                while True:
                    client = clients.enter_context(socket.socket(socket.AF_UNIX))
                    client.setblocking(False)
                    client.connect(path)
            for command in ("status", "observe"):
                result = run([BIN_DIR / "orvane-ctl", "--control", path, "--timeout", "0.3", command], timeout=5)
                self.assertEqual(1, result.returncode)
                self.assertEqual("orvane-ctl: no answer in time\n", result.stderr)


class Running(TelephoneCase):
    def test_help_is_status_zero(self):
        for program in ("orvane-phone", "orvane-cloud", "orvane-ctl"):
            result = run([BIN_DIR / program, "--help"])
            self.assertEqual(0, result.returncode, program)
            self.assertIn("--", result.stdout)

    def test_once_ends_with_status_zero_after_the_first_login(self):
        self.start_cloud(calls=5)
        arguments, _ = self.phone_arguments(extra=["--once"])
        result = run(arguments)
        self.assertEqual(0, result.returncode, result.stderr)
        lines = result.stdout.strip().splitlines()
        self.assertIn('"event":"ready"', lines[0])
        self.assertEqual('{"event":"stopped"}', lines[-1])
        self.assertTrue(any('"orvaneFullSync"' in line for line in lines))

    def test_once_for_people_ends_with_a_summary(self):
        self.start_cloud(calls=5)
        arguments, _ = self.phone_arguments(extra=["--once"])
        arguments.remove("--json")
        result = run(arguments)
        self.assertEqual(0, result.returncode, result.stderr)
        self.assertIn("5", result.stdout)

    def test_once_without_a_cloud_is_status_one(self):
        self.start_cloud(calls=1)
        server, ca = self.cloud.url, self.cloud.ca
        self.cloud.program.stop()
        arguments, _ = self.phone_arguments(server=server, ca=ca, extra=["--once"])
        self.assertEqual(1, run(arguments, timeout=45).returncode)

    def test_sigint_and_sigterm_end_cleanly_within_two_seconds(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            self.start_cloud(calls=5)
            phone = self.start_phone()
            phone.wait_for(full_call_log())
            begin = time.monotonic()
            phone.program.process.send_signal(number)
            self.assertEqual(0, phone.program.wait_for_end())
            self.assertLess(time.monotonic() - begin, 2.5 * PATIENCE)
            self.assertEqual({"event": "stopped"}, phone.output.since()[-1])
            self.cloud.program.process.send_signal(number)
            self.assertEqual(0, self.cloud.program.wait_for_end())

    def test_a_signal_during_a_stalled_answer_ends_within_two_seconds(self):
        self.start_cloud(calls=5)
        self.cloud.fault(path="call-log-sync", times=1, latencyMilliseconds=20000)
        phone = self.start_phone()
        self.cloud.wait_for_request("call-log-sync")
        begin = time.monotonic()
        phone.program.process.send_signal(signal.SIGTERM)
        phone.program.wait_for_end()
        self.assertLess(time.monotonic() - begin, 3 * PATIENCE)

    def test_without_an_observer_nothing_is_downloaded(self):
        self.start_cloud(calls=5)
        phone = self.start_phone(extra=["--no-observer"], log_level=5)
        phone.program.wait_for_error_line("no observer subscribed")
        self.assertEqual([], self.cloud.requests("call-log-sync"))

    def test_without_synchronisation_switched_on_the_observer_is_emptied(self):
        self.start_cloud(calls=5)
        phone = self.start_phone(everything_on=False)
        phone.wait_for(full_call_log(lambda data: data == []))
        self.assertEqual([], self.cloud.requests("call-log-sync"))

    def test_a_control_socket_of_a_dead_telephone_is_replaced_and_that_of_a_live_one_is_not(self):
        self.start_cloud(calls=1)
        phone = self.start_phone()
        phone.wait_for(full_call_log())
        arguments, _ = self.phone_arguments()
        arguments[arguments.index("--control") + 1] = phone.control
        self.assertEqual(1, run(arguments).returncode)
        phone.program.kill()
        self.programs.remove(phone.program)
        self.assertTrue(os.path.exists(phone.control))
        arguments.append("--once")
        self.assertEqual(0, run(arguments).returncode)


class Secrets(TelephoneCase):
    def test_tokens_are_redacted_unless_asked_for(self):
        for extra, shown in (((), False), (("--log-secrets",), True)):
            self.start_cloud(calls=3)
            phone = self.start_phone(log_level=6, extra=list(extra))
            phone.wait_for(full_call_log())
            header = self.cloud.requests("/extension/~")[0]["headers"]["authorization"]
            token = header.split(" ", 1)[1]
            log = phone.program.errors()
            self.assertIn("populateToken()", log)
            self.assertEqual(shown, token in log)
            phone.program.stop()
            self.cloud.program.stop()


class Tls(TelephoneCase):
    def test_every_bad_presentation_is_refused_with_one_line(self):
        for profile in ("untrusted", "wrong-host", "expired", "not-yet-valid", "self-signed", "tls1.1"):
            with self.subTest(profile=profile):
                self.start_cloud(calls=1)
                self.cloud.tls(profile)
                phone = self.start_phone(log_level=3)
                phone.wait_for(is_token_failure)
                phone.program.wait_for_error_line(r"connectionHandler\(\) no connection possible")
                refusals = [line for line in phone.program.errors().splitlines() if " refused" in line]
                self.assertEqual(1, len(refusals), phone.program.errors())
                self.assertEqual([], self.cloud.requests())
                phone.program.stop()
                self.cloud.program.stop()


if __name__ == "__main__":
    unittest.main()

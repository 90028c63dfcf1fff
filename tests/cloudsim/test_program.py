"""The program's options, its bad input and its end."""

import json
import os
import resource
import signal
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from simulator import BIN_DIR, EXTENSION, PATIENCE, Client, Simulator, SimulatorCase

PROGRAM = BIN_DIR / "orvane-cloud"
SAMPLE = Path(__file__).resolve().parents[2] / "cloudsim/sample-account.json"


def run(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=20 * PATIENCE, check=False)


class BadInput(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def assert_refused(self, *arguments, saying=""):
        result = run("--tls-dir", self.folder.name + "/tls", *arguments)
        self.assertEqual((2, ""), (result.returncode, result.stdout))
        self.assertEqual(1, len(result.stderr.splitlines()), result.stderr)
        self.assertIn(saying, result.stderr)

    def account(self, text):
        path = f"{self.folder.name}/account.json"
        with open(path, "w", encoding="utf-8") as file:
            file.write(text if isinstance(text, str) else json.dumps(text))
        return path

    def test_options(self):
        self.assert_refused("--no-such-option", saying="--no-such-option")
        self.assert_refused("--listen", "nowhere", saying="nowhere")
        self.assert_refused("--admin", "127.0.0.1:99999", saying="99999")
        self.assert_refused("--calls", "-1", saying="--calls")
        for seed in ("-1", "18446744073709551616", "1.5", "x", ""):
            self.assert_refused("--seed", seed, saying="--seed")
        self.assert_refused("--calls", 1, "--late-calls", 2, saying="--late-calls")
        self.assert_refused("--device", "KD24", saying="KD24")
        self.assert_refused("--data", "x", "--seed", "1", saying="--")

    def test_a_port_in_use(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            address = f"127.0.0.1:{taken.getsockname()[1]}"
            self.assert_refused("--listen", address, saying=address)
            self.assert_refused("--admin", address, saying=address)

    def test_a_certificate_folder_that_cannot_be(self):
        result = run("--tls-dir", self.account("a file") + "/tls")
        self.assertEqual((2, 1), (result.returncode, len(result.stderr.splitlines())))

    def test_a_certificate_name_that_does_not_fit_into_a_certificate(self):
        name = "n" * 65
        account = self.account({"extensions": [{"id": 1, "number": "1", "name": "A"}],
                                "devices": [{"model": "KD24", "mac": "1", "extensionId": 1, "certificateName": name}]})
        self.assert_refused("--require-client-cert", "--data", account, saying=name)

    def test_it_names_what_ran_out_when_it_cannot_listen(self):
        reasons = set()
        for descriptors in range(3, 20):
            process = subprocess.Popen(
                [PROGRAM, "--tls-dir", self.folder.name + "/tls"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.PIPE, text=True,
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors)))
            started = process.stdout.readline()
            process.kill()
            reasons.update(line.rsplit(": ")[-1] for line in process.communicate()[1].splitlines()
                           if "cannot listen" in line)
            if started:
                break
        self.assertEqual({"Too many open files"}, reasons)

    def test_account_files(self):
        extension = {"id": 1, "number": "1", "name": "A"}
        self.assert_refused("--data", self.folder.name + "/missing.json", saying="missing.json")
        for content, place in (
                ('{"extensions": [', "account.json"), ("[]", "account"), ({"more": 1}, "more"),
                ({"extensions": [{"id": "x"}]}, "extensions[0].id"), ({"extensions": [extension, extension]}, "twice"),
                ({"extensions": [{**extension, "calls": [{}, {"duration": "long"}]}]}, "extensions[0].calls[1].duration"),
                ({"extensions": [{**extension, "contacts": [{"firstName": 1}]}]}, "extensions[0].contacts[0].firstName"),
                ({"extensions": [{**extension, "dndStatus": "Never"}]}, "dndStatus"),
                ({"extensions": [{**extension, "grants": [9]}]}, "grant 9"),
                ({"devices": [{"model": "KD24", "mac": "1", "extensionId": 1}]}, "devices[0].extensionId"),
                ({"settings": {"idleTimeoutSeconds": "x"}}, "idleTimeoutSeconds")):
            with self.subTest(place=place):
                self.assert_refused("--data", self.account(content), saying=place)


class Running(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def start(self, *arguments):
        simulator = Simulator(self.folder.name, *arguments)
        self.addCleanup(simulator.stop)
        return simulator

    def test_help(self):
        result = run("--help")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        for option in ("--listen", "--admin", "--data", "--seed", "--tls-dir", "--require-client-cert", "--live"):
            self.assertIn(option, result.stdout)

    def test_standard_output_that_takes_nothing(self):
        for arguments in (["--help"], ["--tls-dir", self.folder.name]):
            with open("/dev/full", "w", encoding="utf-8") as full:
                result = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, stdout=full,
                                        stderr=subprocess.PIPE, text=True, timeout=20 * PATIENCE, check=False)
            self.assertEqual((1, "orvane-cloud: cannot write to standard output: No space left on device\n"),
                             (result.returncode, result.stderr))

    def test_the_largest_seed(self):
        self.start("--seed", 2 ** 64 - 1)

    def test_the_first_line_names_addresses_authority_and_devices(self):
        ready = self.start().ready
        self.assertIs(True, ready["ready"])
        self.assertRegex(ready["url"], r"^https://127\.0\.0\.1:\d+$")
        self.assertRegex(ready["admin"], r"^http://127\.0\.0\.1:\d+$")
        self.assertTrue(os.path.isfile(ready["ca"]))
        self.assertEqual(("KD24", "0011AABBCC01"), (ready["devices"][0]["model"], ready["devices"][0]["mac"]))

    def test_both_signals_end_it_within_two_seconds_whatever_is_going_on(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            simulator = self.start("--live")
            client = Client(simulator)
            simulator.fault(path="presence", latencyMilliseconds=60000)
            client.connection.request("GET", client.device + EXTENSION + "~/presence")
            begin = time.monotonic()
            self.assertEqual((0, ""), simulator.stop(number))
            self.assertLess(time.monotonic() - begin, 2 * PATIENCE)
            client.close()

    def test_it_listens_on_ipv6(self):
        try:
            socket.create_server(("::1", 0), family=socket.AF_INET6).close()
        except OSError:
            self.skipTest("no IPv6 on this machine")
        simulator = self.start("--listen", "[::1]:0")
        self.assertIn("[::1]:", simulator.ready["url"])
        client = Client(simulator)
        self.assertEqual(200, client.get(EXTENSION + "~").status)
        client.close()

    def test_one_seed_gives_one_account(self):
        def people(seed):
            simulator = self.start("--seed", seed)
            names = [(entry["name"], [call["duration"] for call in entry["calls"]])
                     for entry in simulator.admin("GET", "/extensions")]
            simulator.stop()
            return names

        self.assertEqual(people(5), people(5))
        self.assertNotEqual(people(5), people(6))

    def test_a_further_device_is_the_first_ones_twin(self):
        simulator = self.start("--device", "KX1/00AA", "--device", "KX2/00BB")
        self.assertEqual([("KX1", "00AA"), ("KX2", "00BB"), ("KD24", "0011AABBCC01")],
                         [(device["model"], device["mac"]) for device in simulator.ready["devices"][:3]])
        client = Client(simulator, device="/KX2/00BB")
        self.assertEqual(simulator.ready["devices"][2]["extensionId"], client.get(EXTENSION + "~").json()["id"])
        client.close()

    def test_the_sample_account_works_and_comes_back_unchanged(self):
        simulator = self.start("--data", SAMPLE)
        client = Client(simulator)
        self.assertEqual(2, len(client.full_call_log().json()["records"]))
        client.close()
        data = simulator.admin("GET", "/data")
        simulator.admin("PUT", "/data", data)
        self.assertEqual(data, simulator.admin("GET", "/data"))
        simulator.admin("PUT", "/data", {"extensions": 7}, expected=(400,))
        self.assertEqual(data, simulator.admin("GET", "/data"))


class LateCalls(SimulatorCase):
    arguments = ("--calls", 3, "--late-calls", 1)

    def test_late_calls_come_in_some_seconds_after_the_start(self):
        self.assertEqual(2, len(self.simulator.admin("GET", "/calls")))
        deadline = time.monotonic() + 20 * PATIENCE
        while len(self.simulator.admin("GET", "/calls")) < 3:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.2)


if __name__ == "__main__":
    unittest.main()

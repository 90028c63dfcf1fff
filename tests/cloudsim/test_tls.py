"""How the simulator presents itself, and what it wants to see of telephones."""

import json
import os
import shutil
import ssl
import stat
import unittest

from simulator import EXTENSION, Simulator, SimulatorCase


class Profiles(SimulatorCase):
    def refusal(self, profile):
        self.simulator.admin("PUT", "/tls", {"profile": profile})
        with self.assertRaises(OSError) as failure:
            self.client()
        return failure.exception

    def test_the_own_authority_vouches_for_all_loopback_names(self):
        port = self.simulator.ready["url"].rsplit(":", 1)[1]
        for host in ("127.0.0.1", "localhost"):
            self.assertEqual(200, self.client(url=f"https://{host}:{port}").get(EXTENSION + "~").status)

    def test_certificates_that_must_not_be_trusted(self):
        for profile, code in (("untrusted", 20), ("self-signed", 18), ("wrong-host", 64), ("expired", 10),
                              ("not-yet-valid", 9)):
            failure = self.refusal(profile)
            self.assertIsInstance(failure, ssl.SSLCertVerificationError, profile)
            self.assertEqual(code, failure.verify_code, profile)

    def test_old_versions_and_refused_handshakes(self):
        self.assertIsInstance(self.refusal("tls1.1"), ssl.SSLError)
        self.assertIsInstance(self.refusal("refused"), OSError)

    def test_trust_comes_back_and_open_connections_never_lost_it(self):
        client = self.client()
        self.refusal("untrusted")
        self.assertEqual(200, client.get(EXTENSION + "~").status)
        self.simulator.admin("PUT", "/tls", {"profile": "trusted"})
        self.assertEqual(200, self.client().get(EXTENSION + "~").status)

    def test_an_unknown_profile_is_refused(self):
        self.simulator.admin("PUT", "/tls", {"profile": "shiny"}, expected=(400,))


class Files(SimulatorCase):
    def test_certificates_are_kept_and_used_again(self):
        def read(name):
            with open(f"{self.directory}/tls/{name}") as file:
                return file.read()

        before = [read(name) for name in ("ca.pem", "server.pem")]
        again = Simulator(self.directory)
        self.addCleanup(again.stop)
        self.assertEqual(before, [read(name) for name in ("ca.pem", "server.pem")])

    def test_keys_are_for_their_owner_alone(self):
        for name in ("ca-key.pem", "server-key.pem"):
            self.assertEqual(0o600, stat.S_IMODE(os.stat(f"{self.directory}/tls/{name}").st_mode))

    def test_a_damaged_certificate_is_replaced(self):
        self.simulator.stop()
        with open(f"{self.directory}/tls/server.pem", "w") as file:
            file.write("nothing")
        self.simulator = Simulator(self.directory, *self.arguments)
        self.assertEqual(200, self.client().get(EXTENSION + "~").status)


class ClientCertificates(SimulatorCase):
    arguments = ("--require-client-cert",)

    def context(self, device=None):
        context = ssl.create_default_context(cafile=self.simulator.ca)
        if device is not None:
            context.load_cert_chain(device["cert"], device["key"])
        return context

    def test_a_device_logs_in_with_its_own_certificate_only(self):
        first, second = self.simulator.ready["devices"][:2]
        self.assertEqual(200, self.client(context=self.context(first)).get(EXTENSION + "~").status)
        self.assertEqual(401, self.client(context=self.context(second), log_in=False).get("/auth/token").status)

    def test_nobody_comes_in_without_one(self):
        with self.assertRaises(OSError):
            self.client(context=self.context())

    def assert_logs_in(self, device):
        path = f"/{device['model']}/{device['mac']}"
        client = self.client(device=path, context=self.context(device), log_in=False)
        self.assertEqual(200, client.get("/auth/token").status, device["cert"])

    def test_names_that_differ_in_punctuation_have_certificates_of_their_own(self):
        names = ("A-B", "A.B", "A B", "A-2eB", "Ä")
        account = f"{self.directory}/account.json"
        with open(account, "w", encoding="utf-8") as file:
            json.dump({"extensions": [{"id": 1, "number": "1", "name": "A"}],
                       "devices": [{"model": "KD24", "mac": str(number), "extensionId": 1, "certificateName": name}
                                   for number, name in enumerate(names)]}, file)
        self.simulator.stop()
        self.simulator = Simulator(self.directory, *self.arguments, "--data", account)
        for device in self.simulator.ready["devices"]:
            self.assert_logs_in(device)

    def test_a_file_with_the_certificate_of_another_device_is_replaced(self):
        first, second = self.simulator.ready["devices"][:2]
        self.simulator.stop()
        for part in ("cert", "key"):
            shutil.copy(first[part], second[part])
        self.simulator = Simulator(self.directory, *self.arguments)
        for device in self.simulator.ready["devices"][:2]:
            self.assert_logs_in(device)


if __name__ == "__main__":
    unittest.main()

"""The simulator as a process, and a plain HTTPS client for it."""

import http.client
import json
import shutil
import signal
import ssl
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
from pathlib import Path

# Behind the own folder, which has test programs of the same names.
sys.path.append(str(Path(__file__).resolve().parents[1] / "system"))

from orvane_system import BIN_DIR, PATIENCE, wait_until  # noqa: E402,F401

DEVICE = "/KD24/0011AABBCC01"
EXTENSION = "/restapi/v1.0/account/~/extension/"


class Simulator:
    def __init__(self, directory, *arguments):
        self.process = subprocess.Popen(
            [str(argument) for argument in (BIN_DIR / "orvane-cloud", "--tls-dir", f"{directory}/tls", *arguments)],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if not line:
            raise AssertionError(f"the simulator did not start: {self.process.stderr.read()}")
        self.ready = json.loads(line)
        self.ca = self.ready["ca"]

    def stop(self, number=signal.SIGTERM):
        """The exit status, and what stood on standard error."""
        if self.process.poll() is None:
            self.process.send_signal(number)
        try:
            _, errors = self.process.communicate(timeout=5 * PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.communicate()
            raise AssertionError("the simulator did not end") from None
        return self.process.returncode, errors

    def admin(self, method, path, body=None, expected=(200, 201)):
        address = urllib.parse.urlparse(self.ready["admin"])
        connection = http.client.HTTPConnection(address.hostname, address.port, timeout=10 * PATIENCE)
        try:
            connection.request(method, path, None if body is None else json.dumps(body))
            answer = connection.getresponse()
            content = json.loads(answer.read())
        finally:
            connection.close()
        if answer.status not in expected:
            raise AssertionError(f"{method} {path}: {answer.status} {content}")
        return content

    def requests(self, part=""):
        return self.admin("GET", f"/requests?path={urllib.parse.quote(part)}")

    def fault(self, **description):
        return self.admin("POST", "/faults", description)["id"]


class Answer:
    def __init__(self, answer):
        self.status = answer.status
        self.headers = {name.lower(): value for name, value in answer.getheaders()}
        self.body = answer.read()

    def json(self):
        return json.loads(self.body)


class Client:
    """One device. Its connection is kept alive from one request to the next."""

    def __init__(self, simulator, device=DEVICE, url=None, context=None, log_in=True):
        address = urllib.parse.urlparse(url or simulator.ready["url"])
        self.context = context or ssl.create_default_context(cafile=simulator.ca)
        self.connection = http.client.HTTPSConnection(address.hostname, address.port, context=self.context,
                                                      timeout=15 * PATIENCE)
        self.device = device
        self.token = None
        if log_in:
            self.log_in()

    def log_in(self):
        self.token = None
        answer = self.call("GET", "/auth/token")
        if answer.status != 200:
            raise AssertionError(f"no token: {answer.status} {answer.body}")
        self.token = answer.json()["accessToken"]

    def call(self, method, path, body=None, headers=None):
        headers = dict(headers or {})
        if self.token:
            headers.setdefault("Authorization", f"Bearer {self.token}")
        self.connection.request(method, self.device + path, body.encode() if body else None, headers)
        return Answer(self.connection.getresponse())

    def get(self, path):
        return self.call("GET", path)

    def full_call_log(self, extension="~", count=100):
        return self.get(f"{EXTENSION}{extension}/call-log-sync?syncType=FSync&recordCount={count}&view=Simple"
                        "&showDeleted=false&statusGroup=All")

    def call_log_changes(self, token, extension="~", count=100):
        return self.get(f"{EXTENSION}{extension}/call-log-sync?syncType=ISync&recordCount={count}&view=Simple"
                        f"&showDeleted=true&syncToken={token}")

    def close(self):
        self.connection.close()


class SimulatorCase(unittest.TestCase):
    """A simulator for each test, with few data unless the class says otherwise."""

    arguments = ("--seed", 7, "--calls", 6, "--contacts", 3)

    def setUp(self):
        self.directory = tempfile.mkdtemp(prefix="orvane-cloud-test-")
        self.addCleanup(shutil.rmtree, self.directory, ignore_errors=True)
        self.simulator = Simulator(self.directory, *self.arguments)
        self.addCleanup(self.stop)
        self.clients = []

    def stop(self):
        for client in self.clients:
            client.close()
        status, errors = self.simulator.stop()
        self.assertEqual((0, ""), (status, errors))

    def client(self, log_in=True, **options):
        client = Client(self.simulator, log_in=False, **options)
        self.clients.append(client)
        if log_in:
            client.log_in()
        return client

"""A telephone and a cloud for one test, started on demand and ended with it."""

import shutil
import subprocess
import sys
import tempfile
import unittest

from orvane_cloud import Cloud
from orvane_system import BIN_DIR, EVERYTHING_ON, MAC, MODEL, Program, run

CALL_LOG = 0
PHONEBOOK = 5


def sync_event(name, data_type, accept):
    return lambda line: line.get("event") == name and line["type"] == data_type and (accept is None or accept(line["data"]))


def full_call_log(accept=None):
    return sync_event("orvaneFullSync", CALL_LOG, accept)


def incremental_call_log(accept=None):
    return sync_event("orvaneIncrementalSync", CALL_LOG, accept)


def full_phonebook(accept=None):
    return sync_event("orvaneFullSync", PHONEBOOK, accept)


def incremental_phonebook(accept=None):
    return sync_event("orvaneIncrementalSync", PHONEBOOK, accept)


def is_token_failure(line):
    return line.get("event") == "orvaneEvent" and line["type"] == 6


def is_item(name, value=None):
    return lambda line: line.get("event") == "item" and line["name"] == name and (value is None or line["value"] == value)


def make_authority(directory):
    """A certificate authority's file that nobody's server has a certificate of."""
    ca = f"{directory}/ca.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", f"{directory}/key.pem",
                    "-out", ca, "-subj", "/CN=nobody", "-days", "2"], check=True, capture_output=True)
    return ca


class Phone:
    def __init__(self, program, control):
        self.program = program
        self.output = program.output
        self.control = control

    def wait_for(self, *arguments, **options):
        return self.output.wait_for(*arguments, **options)

    def alive(self):
        return self.program.process.poll() is None

    def ctl(self, *arguments, timeout=30.0):
        return run([BIN_DIR / "orvane-ctl", "--control", self.control, *arguments], timeout)


class TelephoneCase(unittest.TestCase):
    model = MODEL
    mac = MAC

    def setUp(self):
        self.directory = tempfile.mkdtemp(prefix="orvane-system-")
        self.programs = []
        self.cloud = None
        self._phones = 0

    def tearDown(self):
        failures = [failure for failure in map(self._end, self.programs) if failure]
        if failures or self._failed():
            for program in self.programs:
                sys.stderr.write(f"--- {program.error_path.name}\n{program.errors()[-4000:]}\n")
        shutil.rmtree(self.directory, ignore_errors=True)
        self.assertEqual([], failures)

    @staticmethod
    def _end(program):
        try:
            program.stop()
        except AssertionError as failure:
            return str(failure)
        return None

    def _failed(self):
        result = self._outcome.result
        return any(test is self for test, _ in result.failures + result.errors)

    def start_cloud(self, *extra, calls=None, **data):
        self.cloud = Cloud(self.directory, (self.model, self.mac), extra, calls=calls, **data)
        self.programs.insert(0, self.cloud.program)
        return self.cloud

    def phone_arguments(self, items=None, everything_on=True, time_scale=None, log_level=4, store=None, server=None,
                        ca=None, mac=None, model=None, extra=()):
        self._phones += 1
        control = f"{self.directory}/control-{self._phones}.sock"
        arguments = [BIN_DIR / "orvane-phone", "--json", "--control", control, "--server", server or self.cloud.url,
                     "--ca", ca or self.cloud.ca, "--model", model or self.model, "--mac", mac or self.mac,
                     "--log-level", log_level]
        values = dict(EVERYTHING_ON if everything_on else {})
        values.update(items or {})
        for name, value in values.items():
            arguments += ["--set", f"{name}={value}"]
        if time_scale is not None:
            arguments += ["--time-scale", time_scale]
        if store is not None:
            arguments += ["--store", store]
        return [*arguments, *extra], control

    def start_phone(self, **options):
        arguments, control = self.phone_arguments(**options)
        program = Program(arguments, self.directory, "phone")
        self.programs.insert(0, program)
        phone = Phone(program, control)
        phone.wait_for(lambda line: line.get("event") == "ready", what="the ready line")
        return phone

"""A telephone whose standard output takes nothing, or takes no more."""

import json
import subprocess
import unittest

from orvane_system import PATIENCE
from telephone_case import TelephoneCase, full_call_log


class RefusedOutput(TelephoneCase):
    def start(self, output, *extra, json_lines=True, **options):
        """A telephone with its standard output there; its whole log goes to standard error."""
        arguments, _ = self.phone_arguments(log_level=6, extra=extra, **options)
        if not json_lines:
            arguments.remove("--json")
        self.errors = f"{self.directory}/errors"
        with open(self.errors, "w", encoding="utf-8") as errors:
            process = subprocess.Popen([str(argument) for argument in arguments], stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=errors, text=True, encoding="utf-8")
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def assert_ends(self, process, reason):
        self.assertEqual(1, process.wait(10 * PATIENCE))
        with open(self.errors, encoding="utf-8") as file:
            errors = file.read()
        told = [line for line in errors.splitlines() if line.startswith("orvane-phone:")]
        self.assertEqual([f"orvane-phone: cannot write to standard output: {reason}"], told)
        self.assertIn("stop()", errors)

    def test_a_full_output_is_told_once_and_ends_the_telephone(self):
        self.start_cloud(calls=1)
        for json_lines in (True, False):
            for extra in ([], ["--once"]):
                with self.subTest(json_lines=json_lines, extra=extra), open("/dev/full", "w", encoding="utf-8") as full:
                    self.assert_ends(self.start(full, *extra, json_lines=json_lines), "No space left on device")

    def test_an_output_that_is_closed_later_ends_the_telephone(self):
        self.start_cloud(calls=1)
        process = self.start(subprocess.PIPE, time_scale=30)
        accept = full_call_log()
        while not accept(json.loads(process.stdout.readline())):
            pass
        process.stdout.close()
        self.cloud.add_call(result="Missed")
        self.assert_ends(process, "Broken pipe")


if __name__ == "__main__":
    unittest.main()

"""Tokens with texts that can be recognised, and the search for them in everything that a telephone leaves behind."""

import unittest
from pathlib import Path

from orvane_system import wait_until
from telephone_case import TelephoneCase, full_call_log, is_token_failure

BEARER = "canaryBearer0123456789"


class Canaries(TelephoneCase):
    def left_behind(self, phone, store):
        """All text that somebody could read: log, console, control program and store."""
        outputs = [phone.program.errors(), "\n".join(map(str, phone.output.since())), phone.ctl("status").stdout]
        for path in Path(self.directory).glob(f"{Path(store).name}*"):
            outputs.append(path.read_bytes().decode(errors="replace"))
        return "\n".join(outputs)

    def search(self, canary, path, body, extra, until, show):
        self.start_cloud(calls=3)
        self.cloud.fault(path=path, times=0, **body)
        store = f"{self.directory}/store-{self._phones}.db"
        phone = self.start_phone(log_level=6, store=store, extra=list(extra))
        until(phone)
        left = self.left_behind(phone, store)
        self.assertEqual(show, canary in left, f"{canary} with {extra}")
        phone.program.stop()
        self.cloud.program.stop()

    def search_both_ways(self, canary, path, body, until):
        for extra, show in (((), False), (("--log-secrets",), True)):
            self.search(canary, path, body, extra, until, show)

    def wait_for_bearer(self, phone):
        wait_until(lambda: any(BEARER in request["headers"].get("authorization", "") for request in self.cloud.requests()),
                   what="a request with the token")

    def test_a_bearer_token_in_answer_and_headers(self):
        self.search_both_ways(BEARER, "/auth/token", {"bodyJson": {"accessToken": BEARER, "expiresIn": 3600}},
                              self.wait_for_bearer)

    def test_a_token_in_an_answer_that_lacks_its_lifetime(self):
        self.search_both_ways(BEARER, "/auth/token", {"bodyJson": {"accessToken": BEARER}},
                              lambda phone: phone.wait_for(is_token_failure))


if __name__ == "__main__":
    unittest.main()

"""Tokens with texts that can be recognised, and the search for them in everything that a telephone leaves behind."""

import unittest
from pathlib import Path

from orvane_system import BIN_DIR, Program, wait_until
from telephone_case import Phone, TelephoneCase
from telephone_pair import TIME_SCALE

BEARER = "canaryBearer0123456789"
SOCKET = "canarySocket0123456789"
ADDRESS = "canaryAddress0123456789"
CONTEXT = "canaryContext0123456789"
RUNS = (  # log level, options, whether a token is to be seen
    (3, ["--json"], False),  # the level that a telephone has by itself
    (6, ["--json"], False),
    (6, [], False),  # the report for people
    (6, ["--json", "--log-secrets"], True),
)


class Canaries(TelephoneCase):
    def start(self, level, options, store):
        arguments, control = self.phone_arguments(log_level=level, store=store, time_scale=TIME_SCALE / 2)
        arguments.remove("--json")
        program = Program([*arguments, *options], self.directory, "phone", parse=str)
        self.programs.insert(0, program)
        phone = Phone(program, control)
        wait_until(lambda: phone.ctl("status").returncode == 0, what="the telephone")
        return phone

    def left_behind(self, phone, observer, store):
        """All text that somebody could read: log, console, messages to other processes, control program, store."""
        outputs = [phone.program.errors(), *phone.output.since(), observer.errors(), *observer.output.since()]
        for command in (["status"], ["call", "isRunning"], ["item", "ORVANE_API_SERVER_ADDRESS"]):
            result = phone.ctl(*command, timeout=5)
            outputs += [result.stdout, result.stderr]
        for path in Path(self.directory).glob(f"{Path(store).name}*"):
            outputs.append(path.read_bytes().decode(errors="replace"))
        return "\n".join(outputs)

    def search(self, canary, plant, arrived, logged=True):
        """`plant` prepares the cloud; `arrived` waits until the telephone has had the token in hand. What is logged by
        nobody is not to be seen with --log-secrets either."""
        for level, options, shown in RUNS:
            with self.subTest(level=level, options=options):
                self.start_cloud(calls=3)
                plant()
                store = f"{self.directory}/store-{self._phones}.db"
                phone = self.start(level, options, store)
                observer = Program([BIN_DIR / "orvane-ctl", "--control", phone.control, "observe"], self.directory,
                                   "observer", parse=str)
                self.programs.insert(0, observer)
                arrived(phone)
                left = self.left_behind(phone, observer, store)
                found = [line[:200] for line in left.splitlines() if canary in line]
                self.assertEqual(shown and logged, bool(found), found)
                for program in (observer, phone.program, self.cloud.program):
                    program.stop()

    def answer(self, path, **body):
        return lambda: self.cloud.fault(path=path, times=0, bodyJson=body)

    def upgrades_with(self, text):
        return [request for request in self.cloud.requests("/ws?") if text in request["target"]]

    def socket_address(self):
        return self.cloud.url.replace("https:", "wss:") + "/ws"

    def test_a_bearer_token_in_answer_and_headers(self):
        self.search(BEARER, self.answer("/auth/token", accessToken=BEARER, expiresIn=3600), lambda _: wait_until(
            lambda: any(BEARER in request["headers"].get("authorization", "") for request in self.cloud.requests()),
            what="a request with the token"))

    def test_a_token_in_an_answer_that_lacks_its_lifetime(self):
        self.search(BEARER, self.answer("/auth/token", accessToken=BEARER),
                    lambda phone: phone.program.wait_for_error_line("handleTokenResponse.. not a valid response"))

    def test_a_socket_token_in_answer_and_address(self):
        self.search(SOCKET, lambda: self.answer("/oauth/wstoken", uri=self.socket_address(), ws_access_token=SOCKET,
                                                expires_in=600)(),
                    lambda _: wait_until(lambda: self.upgrades_with(f"access_token={SOCKET}"), what="the upgrade"), logged=False)

    def test_a_token_in_the_address_that_the_provider_gives(self):
        self.search(ADDRESS, lambda: self.answer("/oauth/wstoken", uri=f"{self.socket_address()}?access_token={ADDRESS}",
                                                 ws_access_token=SOCKET, expires_in=600)(),
                    lambda _: wait_until(lambda: self.upgrades_with(ADDRESS), what="the upgrade"))

    def test_a_socket_token_in_an_answer_that_lacks_its_lifetime(self):
        self.search(SOCKET, lambda: self.answer("/oauth/wstoken", uri=self.socket_address(), ws_access_token=SOCKET)(),
                    lambda phone: phone.program.wait_for_error_line("handleWebSocketAccessTokenResponse.. not a valid"))

    def test_a_token_of_the_session_in_frame_and_address(self):
        def subscribed():
            return [session["id"] for session in self.cloud.admin("GET", "sessions")
                    if session["connected"] and session["subscriptions"]]

        def arrived(_):
            # A session that was read from the list may have been left meanwhile, if a pong was late.
            wait_until(lambda: plant_and_freeze() or self.upgrades_with(f"wsc={CONTEXT}"), what="the recovery")

        def plant_and_freeze():
            for session in subscribed():
                if session not in frozen:
                    frozen.add(session)
                    self.cloud.admin("POST", f"sessions/{session}/frame", {"json": [meta, {"event": "none", "body": {}}]})
                    self.cloud.admin("POST", f"sessions/{session}/freeze-pongs", {"on": True})

        meta = {"type": "ServerNotification", "messageId": "m", "status": 200,
                "wsc": {"token": CONTEXT, "sequence": 1000}}
        frozen = set()
        self.search(CONTEXT, lambda: None, arrived)


if __name__ == "__main__":
    unittest.main()

"""The provider's simulator as a process, with its administration."""

import base64
import json

from orvane_system import BIN_DIR, Program, http, wait_until

CALL = {"direction": "Inbound", "result": "Accepted", "duration": 65,
        "from": {"phoneNumber": "+49301", "name": "Anna"}, "to": {"phoneNumber": "+49302", "name": "Bert"}}


class Cloud:
    def __init__(self, directory, device, extra=(), calls=None, contacts=0, seed=1, data=None,
                 listen="127.0.0.1:0"):
        arguments = [BIN_DIR / "orvane-cloud", "--listen", listen, "--admin", "127.0.0.1:0",
                     "--tls-dir", f"{directory}/tls"]
        if data is not None:
            path = f"{directory}/account.json"
            with open(path, "w", encoding="utf-8") as file:
                json.dump(data, file)
            arguments += ["--data", path]
        else:
            arguments += ["--seed", seed, "--calls", 0 if calls is None else calls, "--contacts", contacts]
        self.program = Program([*arguments, *extra], directory, "cloud")
        ready, _ = self.program.output.wait_for(lambda line: line.get("ready"), timeout=30, what="the ready line")
        self.url, self.admin_url, self.ca = ready["url"], ready["admin"], ready["ca"]
        self.extension = next(known["extensionId"] for known in ready["devices"]
                              if (known["model"], known["mac"]) == device)

    def admin(self, method, path, body=None):
        return http(method, f"{self.admin_url}/{path}", body)

    # ---- Data ------------------------------------------------------------------------------------------------------

    def add_call(self, **members):
        return self.admin("POST", "calls", {**CALL, **members})["id"]

    def change_call(self, call_id, **members):
        self.admin("PATCH", f"calls/{call_id}", members)

    def delete_call(self, call_id):
        self.admin("DELETE", f"calls/{call_id}")

    def calls(self):
        return self.admin("GET", "calls")

    def add_contact(self, **members):
        return self.admin("POST", "contacts", members)["id"]

    def change_contact(self, contact_id, **members):
        self.admin("PATCH", f"contacts/{contact_id}", members)

    def delete_contact(self, contact_id):
        self.admin("DELETE", f"contacts/{contact_id}")

    def contacts(self):
        return self.admin("GET", "contacts")

    # ---- What was asked for ----------------------------------------------------------------------------------------

    def requests(self, part=""):
        """Requests in order; `part` is looked for in the target. A part that ends in "~" is the target's very end."""
        found = [request for request in self.admin("GET", "requests") if part in request["target"]]
        return [request for request in found if request["target"].endswith(part)] if part.endswith("~") else found

    def wait_for_request(self, part, count=1, timeout=15.0):
        wait_until(lambda: len(self.requests(part)) >= count, timeout, f"request {part}")
        return self.requests(part)

    # ---- Faults ----------------------------------------------------------------------------------------------------

    def fault(self, path, times=1, **actions):
        return self.admin("POST", "faults", {"path": path, "times": times, **actions})["id"]

    def replace_body(self, path, body, times=1):
        """Answers 200 with these bytes; `body` may be text or bytes."""
        raw = body if isinstance(body, bytes) else body.encode()
        return self.fault(path, times, status=200, bodyBase64=base64.b64encode(raw).decode())

    def disarm(self):
        self.admin("DELETE", "faults")

    def hold_requests(self, path="call-log-sync"):
        """Requests wait until they are released, so that several changes come as one."""
        self._held = self.fault(path, times=0, hold=True)

    def release_requests(self):
        self.admin("DELETE", f"faults/{self._held}")

    def close_connections(self, how="in order"):
        self.admin("POST", "connections/close", {"how": how})

    def tls(self, profile):
        self.admin("PUT", "tls", {"profile": profile})

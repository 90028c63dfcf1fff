"""What an observer of a telephone holds, and how it compares with the cloud."""

import json
import threading

CALL_LOG = 0
PHONEBOOK = 5


def duration_text(seconds):
    hours, rest = divmod(seconds, 3600)
    return f"{hours}:{rest // 60:02}:{rest % 60:02}" if hours else f"{rest // 60:02}:{rest % 60:02}"


class Mirror:
    """Applies the events of a telephone in their order, as its display does."""

    def __init__(self, output):
        self._output = output
        self._position = 0
        self._lock = threading.Lock()
        self.calls = {}
        self.contacts = {}
        self.do_not_disturb = None
        self.full_call_logs = 0

    def update(self):
        with self._lock:
            for line in self._output.since(self._position):
                self._position += 1
                self._take(line)

    def forget_call(self, call_id):
        """No event tells of a call that the telephone itself deletes."""
        self.update()
        self.calls.pop(call_id, None)

    def _take(self, line):
        event = line.get("event")
        if event in ("orvaneFullSync", "orvaneIncrementalSync"):
            if line["type"] == CALL_LOG:
                self.full_call_logs += event == "orvaneFullSync"
                self._apply(self.calls, event, line["data"], lambda record: record.split(",")[1], str)
            elif line["type"] == PHONEBOOK:
                self._apply(self.contacts, event, line["data"], lambda record: json.loads(record)["id"], json.loads)
        elif event == "item" and line["name"] == "CALL_DND_ACTIVATED":
            self.do_not_disturb = line["value"] == "true"

    @staticmethod
    def _apply(held, event, data, id_of, read):
        if event == "orvaneFullSync":
            held.clear()
        for entry in data:
            if entry.startswith("{"):
                held[id_of(entry)] = read(entry)
            else:
                held.pop(entry, None)

    def differences(self, cloud, lines=()):
        """Lines of text, none when the telephone holds what the cloud has. Lines are extensions whose calls are shared."""
        wanted_calls = {}
        for extension in (cloud.extension, *lines):
            for call in cloud.admin("GET", f"calls?extension={extension}"):
                wanted_calls[str(call["id"])] = duration_text(call["duration"])
        wanted_contacts = {str(contact["id"]): contact.get("lastName", "") for contact in cloud.contacts()}
        busy = cloud.admin("GET", f"presence/{cloud.extension}")["dndStatus"] == "DoNotAcceptAnyCalls"
        self.update()
        found = self._compare("call", self.calls, wanted_calls, lambda record, duration: f",{duration}" in record)
        found += self._compare("contact", self.contacts, wanted_contacts, lambda record, name: record["lastname"] == name)
        if self.do_not_disturb is not busy:
            found.append(f"do not disturb is {self.do_not_disturb} here and {busy} in the cloud")
        return found

    @staticmethod
    def _compare(kind, held, wanted, same):
        found = [f"{kind} {key} is missing" for key in wanted.keys() - held.keys()]
        found += [f"{kind} {key} is too many" for key in held.keys() - wanted.keys()]
        found += [f"{kind} {key} is {held[key]!r}, not {wanted[key]!r}"
                  for key in wanted.keys() & held.keys() if not same(held[key], wanted[key])]
        return sorted(found)

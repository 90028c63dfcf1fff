"""A plain WebSocket client, frame by frame, and the messages that telephones send."""

import base64
import json
import os
import socket
import ssl
import struct
import urllib.parse
import uuid

from simulator import PATIENCE

TEXT, CLOSE, PING, PONG = 1, 8, 9, 10
PRESENCE = "/restapi/v1.0/account/~/extension/~/presence?detailedTelephonyState=true"
VOICEMAIL = "/restapi/v1.0/account/~/extension/~/message-store?direction=Inbound&type=Voicemail"
DND = "/restapi/v1.0/account/~/extension/~/presence/dnd"
LINE_DND = "/restapi/v1.0/account/~/extension/~/presence/line/presence/dnd"


class Refused(Exception):
    """The upgrade was answered with something else than 101."""


class Channel:
    def __init__(self, simulator, token, context=None, url=None):
        uri, access = token["uri"], token["ws_access_token"]
        address = urllib.parse.urlparse(url or uri)
        target = f"{address.path}?access_token={access}" + (f"&wsc={context}" if context else "")
        plain = socket.create_connection((address.hostname, address.port), timeout=10 * PATIENCE)
        self.socket = ssl.create_default_context(cafile=simulator.ca).wrap_socket(plain, server_hostname=address.hostname)
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((f"GET {target} HTTP/1.1\r\nHost: {address.netloc}\r\nUpgrade: websocket\r\n"
                             f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n\r\n").encode())
        self._buffer = b""
        while b"\r\n\r\n" not in self._buffer:
            self._receive()
        head, self._buffer = self._buffer.split(b"\r\n\r\n", 1)
        if b" 101 " not in head.split(b"\r\n")[0]:
            self.socket.close()
            raise Refused(head.split(b"\r\n")[0].decode())
        self.context = None

    def _receive(self):
        received = self.socket.recv(65536)
        if not received:
            raise EOFError
        self._buffer += received

    def _take(self, count):
        while len(self._buffer) < count:
            self._receive()
        taken, self._buffer = self._buffer[:count], self._buffer[count:]
        return taken

    def frame(self, timeout=10.0):
        """The next frame: opcode, whether it is final, payload."""
        self.socket.settimeout(timeout * PATIENCE)
        first, second = self._take(2)
        length = second & 0x7F
        if length == 126:
            length, = struct.unpack(">H", self._take(2))
        elif length == 127:
            length, = struct.unpack(">Q", self._take(8))
        return first & 0x0F, bool(first & 0x80), self._take(length)

    def send_frame(self, opcode, payload, final=True):
        mask = os.urandom(4)
        head = bytes([(0x80 if final else 0) | opcode])
        if len(payload) < 126:
            head += bytes([0x80 | len(payload)])
        elif len(payload) <= 0xFFFF:
            head += bytes([0x80 | 126]) + struct.pack(">H", len(payload))
        else:
            head += bytes([0x80 | 127]) + struct.pack(">Q", len(payload))
        self.socket.sendall(head + mask + bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload)))

    def message(self, timeout=10.0):
        """The next text message as JSON: metadata, and data or None. The session context is remembered."""
        opcode, _, payload = self.frame(timeout)
        assert opcode == TEXT, (opcode, payload)
        metadata, *data = json.loads(payload)
        self.context = metadata.get("wsc", {}).get("token", self.context)
        return metadata, data[0] if data else None

    def send(self, *elements):
        self.send_frame(TEXT, json.dumps(elements).encode())

    def request(self, method, path, body=None):
        """Sends a request and returns its reply."""
        message_id = str(uuid.uuid4())
        metadata = {"type": "ClientRequest", "messageId": message_id, "method": method, "path": path}
        self.send(metadata, *([] if body is None else [body]))
        reply, data = self.message()
        assert (reply["type"], reply["messageId"]) == ("ClientRequest", message_id), reply
        return reply["status"], data

    def subscribe(self, *filters):
        return self.request("POST", "/restapi/v1.0/subscription", subscription(*filters))

    def is_quiet(self, seconds=0.3):
        try:
            self.frame(seconds / PATIENCE)
        except (TimeoutError, socket.timeout):
            return True
        return False

    def ending(self, timeout=10.0):
        """The code of the close frame that comes, or "reset" or "end" without one; other frames are passed over."""
        try:
            while True:
                opcode, _, payload = self.frame(timeout)
                if opcode == CLOSE:
                    return struct.unpack(">H", payload[:2])[0] if payload else None
        except EOFError:
            return "end"
        except ConnectionResetError:
            return "reset"

    def vanish(self):
        """Goes without a word, as a telephone that loses its power: the other side learns nothing."""
        self.socket.settimeout(None)

    def close(self):
        self.socket.close()


def subscription(*filters):
    return {"eventFilters": list(filters), "deliveryMode": {"transportType": "WebSocket"}}



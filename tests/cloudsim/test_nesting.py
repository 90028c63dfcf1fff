"""JSON that nests without end: it is refused wherever it comes from, and the simulator lives on."""

import http.client
import tempfile
import unittest
import urllib.parse

from channel import TEXT
from simulator import EXTENSION, PATIENCE
from test_channel import ChannelCase
from test_program import run

DEEP = 300_000
DEEP_ARRAY = "[" * DEEP + "]" * DEEP


class Nesting(ChannelCase):
    def administer(self, method, path, text):
        address = urllib.parse.urlparse(self.simulator.ready["admin"])
        connection = http.client.HTTPConnection(address.hostname, address.port, timeout=10 * PATIENCE)
        self.addCleanup(connection.close)
        connection.request(method, path, text)
        return connection.getresponse().status

    def test_an_administrators_body_is_refused(self):
        for text in ('{"x":%s}' % DEEP_ARRAY, '{"x":' * DEEP + "1" + "}" * DEEP, "[" * DEEP):
            self.assertEqual(400, self.administer("POST", "/calls", text))
        self.assertEqual(400, self.administer("PUT", "/data", '{"settings":%s}' % DEEP_ARRAY))

    def test_a_telephones_body_is_refused(self):
        client = self.client()
        for method, path in (("POST", "~/address-book/contact"), ("PUT", "~/presence")):
            self.assertEqual(400, client.call(method, EXTENSION + path, '{"x":%s}' % DEEP_ARRAY).status)

    def test_a_frame_is_refused(self):
        channel = self.opened()
        channel.send_frame(TEXT, ('[{"type":"ClientRequest","messageId":"1","method":"POST",'
                                  f'"path":"/restapi/v1.0/subscription"}},{DEEP_ARRAY}]').encode())
        metadata, _ = channel.message()
        self.assertEqual(("Error", 400), (metadata["type"], metadata["status"]))

    def test_an_account_file_is_refused_in_one_line(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            file.write('{"extensions":[{"id":1,"number":"1","name":"A","calls":[{"x":%s}]}]}' % DEEP_ARRAY)
            file.flush()
            result = run("--data", file.name)
            self.assertEqual((2, ""), (result.returncode, result.stdout))
            self.assertEqual([f"orvane-cloud: {file.name}: nests too deeply"], result.stderr.splitlines())

    def test_brackets_in_texts_do_not_count(self):
        self.assertEqual(201, self.administer("POST", "/calls", '{"x":"%s\\"%s"}' % ("[" * 1000, "{" * 1000)))


if __name__ == "__main__":
    unittest.main()

"""An independent WebSocket server for the conformance run of the client.

Arguments: certificate file, key file. The first line on standard output is the port, each further one tells how a
connection went: "PATH close CODE" after its end.
"""

import asyncio
import ssl
import sys

import websockets

MEBIBYTE = 1024 * 1024


async def echo(socket):
    async for message in socket:
        await socket.send(message)


async def fragments(socket):
    await socket.send(["frag", "", "men", "ts \u00e4\u20ac\U0001f600"])
    await socket.wait_closed()


async def pings(socket):
    """Each ping must be answered with its own data before the next one goes out."""
    for number in range(5):
        answered = await socket.ping(f"ping {number}")
        await asyncio.wait_for(answered, 5)
    await socket.send("all pings answered")
    await socket.wait_closed()


async def large(socket):
    await socket.send("x" * MEBIBYTE)
    await socket.send("x" * (MEBIBYTE + 1))
    await socket.wait_closed()


async def binary(socket):
    await socket.send(b"\xff\x00")
    await socket.send("text")
    await socket.wait_closed()


async def close(socket):
    await socket.close(code=4001, reason="gr\u00fcnde")


async def headers(socket):
    names = sorted(name.lower() for name in socket.request_headers)
    await socket.send(",".join(names))
    await socket.wait_closed()


SCRIPTS = {
    "/echo": echo,
    "/fragments": fragments,
    "/pings": pings,
    "/large": large,
    "/binary": binary,
    "/close": close,
    "/headers": headers,
}


async def serve(socket):
    path = socket.path.split("?")[0]
    try:
        await SCRIPTS[path](socket)
    except websockets.ConnectionClosed:
        pass
    await socket.wait_closed()
    print(f"{path} close {socket.close_code}", flush=True)


async def main(certificate, key):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    async with websockets.serve(serve, "127.0.0.1", 0, ssl=context, max_size=2 * MEBIBYTE, ping_interval=None) as server:
        print(server.sockets[0].getsockname()[1], flush=True)
        await asyncio.Future()


if __name__ == "__main__":
    asyncio.run(main(sys.argv[1], sys.argv[2]))

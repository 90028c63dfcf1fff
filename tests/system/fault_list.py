"""Every fault that the simulator can put upon an exchange, and the exchanges of the service.

A hold and a dead port end when the faults are disarmed; all others end by themselves or then as well.
"""

FAULTS = {
    "status-400": {"status": 400},
    "status-401": {"status": 401},
    "status-404": {"status": 404},
    "status-429-with-wait": {"status": 429, "retryAfter": 1},
    "status-429-with-a-long-wait": {"status": 429, "retryAfter": 3600},
    "status-500": {"status": 500},
    "status-503-with-a-bad-wait": {"status": 503, "retryAfter": "soon"},
    "body-that-is-no-json": {"body": "<html>busy</html>"},
    "body-that-is-a-list": {"bodyJson": []},
    "body-of-other-bytes": {"bodyBase64": "//79AAAB"},
    "redirect-to-the-same-place": {"redirect": "same"},
    "redirect-relative": {"redirect": "relative"},
    "redirect-to-another-port": {"redirect": "port"},
    "redirect-without-a-path": {"redirect": "https://127.0.0.1:1"},
    "empty-answer": {"emptyAnswer": True},
    "random-bytes": {"randomBytes": 4096},
    "answer-201": {"answerStatus": 201},
    "answer-204": {"answerStatus": 204},
    "odd-headers": {"headers": {"X-Odd": "x" * 8000}},
    "keys-missing": {"missing": ["accessToken", "id", "uri", "syncInfo", "records", "dndStatus"]},
    "keys-of-wrong-types": {"wrongTypes": ["accessToken", "expiresIn", "id", "uri", "records", "dndStatus"]},
    "malformed": {"malformed": True},
    "nested-first": {"nestedFirst": True},
    "huge-body": {"hugeBodyBytes": 2_000_000},
    "hold": {"hold": True},
    "latency": {"latencyMilliseconds": 600, "jitterMilliseconds": 300},
    "low-bandwidth": {"bytesPerSecond": 4000},
    "trickle": {"trickleBytes": 200, "trickleMilliseconds": 20},
    "chunks": {"chunkBytes": 7},
    "cut-off": {"cutAfterBytes": 10},
    "reset-before": {"reset": "before"},
    "reset-in": {"reset": "in"},
    "reset-after": {"reset": "after"},
    "close-after": {"closeAfter": True},
}

# The provider has not done what it was asked for.
NOT_CARRIED_OUT = frozenset(
    fault for fault in FAULTS
    if fault.startswith(("status-", "body-", "redirect-")) or fault in ("empty-answer", "random-bytes", "reset-before"))
# It may have, but a reader gets nothing out of the answer.
UNUSABLE = NOT_CARRIED_OUT | {"answer-201", "answer-204", "keys-missing", "keys-of-wrong-types", "malformed", "cut-off",
                              "reset-in"}

# What selects the requests of an exchange.
EXCHANGES = {
    "token": {"path": "/auth/token"},
    "extension": {"pathPattern": "/account/~/extension/~$"},
    "socket-token": {"path": "/oauth/wstoken"},
    "call-log": {"path": "/extension/~/call-log-sync"},
    "line-log": {"path": "/extension/2001/call-log-sync"},
    "grants": {"path": "/grant"},
    "phonebook": {"path": "/address-book-sync"},
    "contact-write": {"path": "/address-book/contact"},
    "presence-read": {"path": "/presence", "method": "GET"},
    "presence-write": {"path": "/presence", "method": "PUT"},
    "deletion": {"path": "/call-log/", "method": "DELETE"},
    "upgrade": {"path": "/ws?"},
}

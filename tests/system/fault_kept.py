"""Cells in which the telephone does not become equal with the cloud by its next synchronisations alone.

Each is behaviour that is kept: with the words by which docs/kept-behaviour.md tells of it, and the way out.
"""

from dataclasses import dataclass

from fault_list import EXCHANGES, NOT_CARRIED_OUT, UNUSABLE

CLEAR_TOKENS, DEVICES_CHANGED, RESTART = "clear-tokens", "devices-changed", "restart"
LOST_PATH = "redirect-without-a-path"
WITHOUT_PATH = "A Location without a path ends the calling thread's work by an exception"
TOKEN_USED_UP = "An answer without \"records\" stores its token all the same"


@dataclass(frozen=True)
class Kept:
    exchange: str
    faults: frozenset
    way_out: str
    entry: str
    blocks_a_thread: bool = False


KEPT = [
    # A timer or a thread ends with a flag set, or without its timer: polling, refreshes or the login stay away. What
    # other processes ask for ends with an error of its own instead, as does a message of a sibling service.
    *(Kept(exchange, frozenset({LOST_PATH}), RESTART, WITHOUT_PATH)
      for exchange in ("token", "extension", "socket-token", "call-log", "line-log", "phonebook", "presence-read")),
    # Nothing asks for the user's id again, without which do-not-disturb events belong to nobody.
    Kept("extension", UNUSABLE - {LOST_PATH}, RESTART, "A failed extension request during a login is not retried"),
    Kept("extension", frozenset({"nested-first"}), RESTART, "A nested object that stands before a scalar of the same name"),
    # Calls are polled for, but do-not-disturb comes by the channel only.
    Kept("socket-token", UNUSABLE - {LOST_PATH}, RESTART, "A failed WebSocket token during a login is not retried"),
    # The changes that such an answer would have brought are not asked for again.
    Kept("call-log", frozenset({"keys-of-wrong-types"}), CLEAR_TOKENS, TOKEN_USED_UP),
    Kept("line-log", frozenset({"keys-of-wrong-types"}), CLEAR_TOKENS, TOKEN_USED_UP),
    Kept("phonebook", frozenset({"keys-of-wrong-types"}), CLEAR_TOKENS, "A last page without \"records\" stores its token"),
    Kept("phonebook", frozenset({"keys-missing", "body-that-is-a-list"}), RESTART,
         "An answer without \"syncInfo\" or its token leaves `m_phonebookSyncTokenSem` taken", blocks_a_thread=True),
    Kept("grants", UNUSABLE - {LOST_PATH}, DEVICES_CHANGED, "A list of lines that could not be fetched counts as an empty one"),
    Kept("deletion", NOT_CARRIED_OUT, CLEAR_TOKENS, "A deleted call is gone from memory before the provider is asked"),
]


def kept(exchange, fault):
    return next((entry for entry in KEPT if entry.exchange == exchange and fault in entry.faults), None)


# What a telephone that is not restarted cannot recover from.
FATAL = {(exchange, fault) for entry in KEPT if entry.blocks_a_thread for exchange in [entry.exchange]
         for fault in entry.faults} | {(exchange, LOST_PATH) for exchange in EXCHANGES}

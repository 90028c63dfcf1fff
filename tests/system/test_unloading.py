"""The service's library, loaded, logged in and unloaded again and again in one process."""

import unittest

from orvane_system import BIN_DIR, Program
from telephone_case import TelephoneCase

ROUNDS = 100
# The TLS library's tables and the platform's thread list settle in the first rounds.
WARM_UP = 20
# What a process keeps for good (a table that grows once, a thread's control block) comes as a rare step; what a life of
# the service leaves behind comes with every life.
RARE_STEPS = 3
STEPS_BYTES = 8192
# The C library would count what it keeps for each thread's next allocation as used.
WITHOUT_CACHE = "GLIBC_TUNABLES=glibc.malloc.tcache_count=0"


class Unloading(TelephoneCase):
    def test_a_hundred_lives_of_the_service_leave_nothing_behind(self):
        cloud = self.start_cloud(calls=20, contacts=10)
        program = Program(["env", WITHOUT_CACHE, BIN_DIR / "LoadRounds", BIN_DIR.parent / "lib/libOrvaneService.so",
                           cloud.url, cloud.ca, ROUNDS], self.directory, "rounds")
        self.programs.insert(0, program)
        self.assertEqual(0, program.wait_for_end(180), program.errors()[-2000:])
        rounds = program.output.since()
        self.assertEqual(ROUNDS, len(rounds))
        self.assertTrue(all(one["loggedIn"] and not one["stillThere"] for one in rounds))
        settled = rounds[WARM_UP:]
        print("first", settled[0], "last", settled[-1])
        self.assertEqual(1, len({one["threads"] for one in settled}), settled)
        self.assertEqual(1, len({one["descriptors"] for one in settled}), settled)
        heap = [one["heap"] for one in rounds]
        steps = sum(after > before for before, after in zip(heap[WARM_UP:], heap[WARM_UP + 1:]))
        self.assertLessEqual(steps, RARE_STEPS, heap)
        self.assertLessEqual(heap[-1] - heap[WARM_UP], STEPS_BYTES, heap)


if __name__ == "__main__":
    unittest.main()

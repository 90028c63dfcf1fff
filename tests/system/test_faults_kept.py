"""The list of cells that need a way out: each names a fault that there is and an entry of the documentation."""

import unittest
from pathlib import Path

from fault_kept import KEPT
from fault_list import EXCHANGES, FAULTS

ROOT = Path(__file__).resolve().parents[2]


class KeptList(unittest.TestCase):
    def test_each_cell_is_there_and_listed_once(self):
        cells = [(entry.exchange, fault) for entry in KEPT for fault in entry.faults]
        self.assertEqual(len(cells), len(set(cells)))
        self.assertEqual([], [cell for cell in cells if cell[0] not in EXCHANGES or cell[1] not in FAULTS])

    def test_each_reason_stands_in_the_documentation(self):
        told = (ROOT / "docs/kept-behaviour.md").read_text(encoding="utf-8")
        self.assertEqual([], [entry.entry for entry in KEPT if entry.entry not in told])


if __name__ == "__main__":
    unittest.main()

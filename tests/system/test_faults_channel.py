"""Every fault against the exchanges that are named below; what a cell does stands in fault_cell.py."""

import unittest

from fault_cell import fault_cases

Faults = fault_cases("token", "upgrade")

if __name__ == "__main__":
    unittest.main()

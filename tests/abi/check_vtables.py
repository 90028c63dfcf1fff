#!/usr/bin/env python3
"""Compares the slot order of virtual tables, as the compiler itself lays them out, with the order on record.

usage: check_vtables.py EXPECTED SOURCE -- COMPILER [FLAG]...
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

SECTION = re.compile(r"\[(?P<bases>bases )?(?P<name>\w+)(?: as (?P<base>\w+))?\]$")
SLOT = re.compile(r"^\d+\s+(?P<entry>.+)$")
FUNCTION_POINTER = "(int (*)(...))"


def read_expected(path):
    """Maps each section's heading to its lines."""
    sections = {}
    current = None
    for number, line in enumerate(Path(path).read_text().splitlines(), 1):
        line = line.strip()
        if not line or line.startswith("#"):
            continue
        if line.startswith("["):
            if not SECTION.match(line):
                sys.exit(f"{path}:{number}: unreadable heading {line}")
            current = sections.setdefault(line, [])
        elif current is None:
            sys.exit(f"{path}:{number}: {line} stands under no heading")
        else:
            current.append(line)
    if not sections:
        sys.exit(f"{path}: nothing is expected")
    return sections


def dump_classes(compiler, source):
    """The compiler's own description of all classes of `source`, with readable names."""
    with tempfile.TemporaryDirectory() as folder:
        dump = Path(folder) / "classes"
        subprocess.run([*compiler, f"-fdump-lang-class={dump}", "-c", source, "-o", "/dev/null"], check=True)
        return subprocess.run(["c++filt", "-n"], input=dump.read_text(), text=True, capture_output=True, check=True).stdout


def paragraph(dump, heading):
    match = re.search(rf"^{re.escape(heading)}\n((?:.+\n)+)", dump, re.MULTILINE)
    if match is None:
        sys.exit(f"the compiler describes no '{heading}'")
    return match.group(1).splitlines()


def bases(dump, name):
    """Base classes in order of declaration, each with its offset and whether it begins a table of its own."""
    found = []
    for line in paragraph(dump, f"Class {name}"):
        node = re.match(r"(\w+) \(0x\w+\) (\d+)", line)
        if node:
            found.append({"name": node.group(1), "offset": int(node.group(2)), "own_table": False})
        elif line.strip().startswith("vptr=") and found:
            found[-1]["own_table"] = True
    return found


def operation(entry):
    """The plain name of the operation in a slot."""
    if entry == "__cxa_pure_virtual":
        return "pure virtual"
    if entry == "0":
        return "destructor"
    signature = entry.split("non-virtual thunk to ")[-1].split("(")[0]
    name = signature.rsplit("::", 1)[-1]
    return "destructor" if name.startswith("~") else name


def tables(dump, name):
    """The tables of a class by the offset of the part that they belong to, each a list of operations."""
    result = {}
    slots = None
    for line in paragraph(dump, f"Vtable for {name}"):
        match = SLOT.match(line)
        if not match:
            continue
        entry = match.group("entry").replace(FUNCTION_POINTER, "").strip()
        if re.fullmatch(r"-?\d+", entry) and FUNCTION_POINTER in line:
            slots = result.setdefault(-int(entry), [])
        elif "typeinfo for" not in entry:
            slots.append(operation(entry))
    return result


def join_destructors(slots):
    """A destructor takes two neighbouring slots, the complete and the deleting one."""
    joined = []
    index = 0
    while index < len(slots):
        if slots[index] == "destructor":
            if slots[index : index + 2] != ["destructor", "destructor"]:
                return None
            index += 1
        joined.append(slots[index])
        index += 1
    return joined


def actual(dump, heading):
    section = SECTION.match(heading)
    name = section.group("name")
    hierarchy = bases(dump, name)
    if section.group("bases"):
        return [base["name"] for base in hierarchy if base["name"] != name]
    if section.group("base"):
        part = [base for base in hierarchy if base["name"] == section.group("base") and base["own_table"]]
        if not part:
            return ["no table of its own"]
        offset = part[0]["offset"]
    else:
        offset = 0
    return join_destructors(tables(dump, name)[offset]) or ["a destructor without its second slot"]


def difference(expected, found):
    for index, (left, right) in enumerate(zip(expected, found)):
        if left != right:
            return f"place {index}: expected {left}, found {right}"
    if len(expected) != len(found):
        return f"expected {len(expected)} places, found {len(found)}"
    return None


def main():
    if "--" not in sys.argv or sys.argv.index("--") != 3:
        sys.exit(__doc__)
    expected = read_expected(sys.argv[1])
    dump = dump_classes(sys.argv[4:], sys.argv[2])
    failures = 0
    for heading, order in expected.items():
        wrong = difference(order, actual(dump, heading))
        print(f"{'FAILED' if wrong else 'ok    '} {heading} {wrong or len(order)}")
        failures += wrong is not None
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()

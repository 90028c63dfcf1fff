#!/usr/bin/env python3
"""Checks what the built library offers and how it is protected.

usage: check_library.py exports|hardening LIBRARY NM READELF
"""

import subprocess
import sys

EXPORTS = {"createOrvaneService", "createOrvaneServiceInvoker", "createOrvaneServiceObserverProxy"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def check_exports(library, nm, _readelf):
    symbols = [line.split() for line in output(nm, "-D", "--defined-only", "--format=posix", library).splitlines()]
    found = {symbol[0]: symbol[1] for symbol in symbols}
    for name in sorted(EXPORTS - found.keys()):
        yield f"{name} is not exported"
    for name, kind in sorted(found.items()):
        if name not in EXPORTS:
            yield f"{name} ({kind}) is exported"
        elif kind != "T":
            yield f"{name} is not a plain function but of kind {kind}"


def check_hardening(library, _nm, readelf):
    segments = [line.split() for line in output(readelf, "--wide", "--program-headers", library).splitlines()]
    flags = {}
    for fields in segments:
        if fields and fields[0] in ("GNU_RELRO", "GNU_STACK"):
            flags[fields[0]] = "".join(fields[6:-1])
    if "GNU_RELRO" not in flags:
        yield "relocations stay writable (no RELRO)"
    if "GNU_STACK" not in flags or "E" in flags["GNU_STACK"]:
        yield "the stack is executable"

    dynamic = output(readelf, "--wide", "--dynamic", library)
    if "BIND_NOW" not in dynamic and "Flags: NOW" not in dynamic:
        yield "symbols are bound lazily (no BIND_NOW)"
    if "TEXTREL" in dynamic:
        yield "code is relocated (TEXTREL)"
    if "(SONAME)" not in dynamic:
        yield "there is no SONAME"
    if "(RPATH)" in dynamic or "(RUNPATH)" in dynamic:
        yield "libraries are looked for in a path of the building machine"

    if "__stack_chk_fail" not in output(readelf, "--wide", "--dyn-syms", library):
        yield "functions have no stack protector"


CHECKS = {"exports": check_exports, "hardening": check_hardening}


def main():
    if len(sys.argv) != 5 or sys.argv[1] not in CHECKS:
        sys.exit(__doc__)
    failures = list(CHECKS[sys.argv[1]](*sys.argv[2:]))
    for failure in failures:
        print(failure)
    if not failures:
        print(f"{sys.argv[1]}: as they should be")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()

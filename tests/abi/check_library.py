#!/usr/bin/env python3
"""Checks what the built library offers and how it is protected.

usage: check_library.py exports|imports|hardening|shipping LIBRARY NM READELF
"""

import json
import re
import subprocess
import sys
from pathlib import Path

SIZE_BUDGET_BYTES = 200_000  # stripped, for the telephone's 32-bit processor
EXPORTS = {"createOrvaneService", "createOrvaneServiceInvoker", "createOrvaneServiceObserverProxy"}
# What the library asks the operating system for; the seed of rand is the platform's. The rest is JSON, memory, text and
# what compilers and sanitizers put in. So environment, files, clocks, sockets, processes and threads are closed to it.
SYSTEM_IMPORTS = {"getrandom": ("getrandom",), "rand": ("rand",), "time": ("time", "__time64")}
OTHER_IMPORTS = re.compile(
    r"(_Z|json_|str|_ITM_|_Unwind_|__aeabi_|__cxa_|__stack_chk_|__(a|t|ub)san_|__sanitizer_|__gcov_)\w+"
    r"|mem(chr|cmp|cpy|move|set)|bcmp|__(mem|str)\w+_chk"
    r"|__dynamic_cast|__errno_location|__g(cc|xx)_personality_v0|__gmon_start__"
)
FOREIGN_CLASSES = re.compile(
    r"\bstd::(\w+::)?(basic_[io]?fstream|basic_filebuf|c(in|out|err|log)\b|chrono|condition_variable|filesystem"
    r"|mutex|random_device|thread|this_thread)|\bboost::"
)


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


def undefined_symbols(library, nm, *options):
    lines = output(nm, "-D", "--undefined-only", *options, library).splitlines()
    # The name stands behind the letter of its kind, its version behind an @.
    return {re.sub(r"^ *\w ", "", line).split("@")[0] for line in lines}


def check_imports(library, nm, _readelf):
    needed = undefined_symbols(library, nm)
    for name, symbols in SYSTEM_IMPORTS.items():
        if needed.isdisjoint(symbols):
            yield f"{name} is not asked for"
    known = {symbol for symbols in SYSTEM_IMPORTS.values() for symbol in symbols}
    for name in sorted(needed - known):
        if not OTHER_IMPORTS.fullmatch(name):
            yield f"{name} is asked for"
    for name in sorted(undefined_symbols(library, nm, "--demangle")):
        if FOREIGN_CLASSES.search(name):
            yield f"{name} is asked for"


def check_hardening(library, _nm, readelf):
    segments = [line.split() for line in output(readelf, "--wide", "--program-headers", library).splitlines()]
    flags = {}
    for fields in segments:
        if fields and fields[0] in ("GNU_RELRO", "GNU_STACK"):
            flags[fields[0]] = "".join(fields[6:-1])
    print("  segments", ", ".join(f"{name} {access}" for name, access in sorted(flags.items())))
    if "GNU_RELRO" not in flags:
        yield "relocations stay writable (no RELRO)"
    if "GNU_STACK" not in flags or "E" in flags["GNU_STACK"]:
        yield "the stack is executable"

    dynamic = output(readelf, "--wide", "--dynamic", library)
    for fact in re.findall(r"\((SONAME|FLAGS|FLAGS_1)\) +(.*)", dynamic):
        print(" ", *fact)
    if "BIND_NOW" not in dynamic and "Flags: NOW" not in dynamic:
        yield "symbols are bound lazily (no BIND_NOW)"
    if "TEXTREL" in dynamic:
        yield "code is relocated (TEXTREL)"
    if "(SONAME)" not in dynamic:
        yield "there is no SONAME"
    if "(RPATH)" in dynamic or "(RUNPATH)" in dynamic:
        yield "libraries are looked for in a path of the building machine"

    needed = re.findall(r"UND (__stack_chk_fail|__\w+_chk)\b", output(readelf, "--wide", "--dyn-syms", library))
    print("  guards called:", ", ".join(sorted(set(needed))) or "none")
    if "__stack_chk_fail" not in needed:
        yield "functions have no stack protector"


def check_shipping(library, nm, readelf):
    """What goes into the firmware: small, without symbols, its debug information beside it. Prints what it finds."""
    path = Path(library).resolve()
    size = path.stat().st_size
    sections = {match[1]: int(match[2], 16) for match in re.finditer(
        r"^ *\[ *\d+\] (\S+) +\S+ +[0-9a-f]+ [0-9a-f]+ ([0-9a-f]+)", output(readelf, "--wide", "--sections", library), re.M)}
    print(f"{path.name}: {size} bytes of {SIZE_BUDGET_BYTES}")
    for name in (".text", ".rodata", ".data", ".bss"):
        print(f"  {name:8} {sections.get(name, 0):8} bytes")
    dynamic = output(readelf, "--wide", "--dynamic", library)
    print("  needs", ", ".join(re.findall(r"NEEDED.*\[(.*)\]", dynamic)))
    if size > SIZE_BUDGET_BYTES:
        yield f"{size - SIZE_BUDGET_BYTES} bytes above the budget"
    if ".symtab" in sections or ".debug_info" in sections:
        yield "symbols or debug information were not taken out"
    if "ELF32" in output(readelf, "--file-header", library):
        found = "__time64" in output(readelf, "--wide", "--dyn-syms", library)
        print("  times have", 64 if found else 32, "bits")
        if not found:
            yield "times end in 2038"
    if "libOrvaneService.so." not in dynamic.split("(SONAME)")[-1].split("\n")[0]:
        yield "the soname has no version"
    for line in output(nm, "-D", "--defined-only", library).splitlines():
        if line.split()[-2] == "u":
            yield f"{line.split()[-1]} is unique in the process, so that the library can never be unloaded"
    yield from check_debug_file(path, sections, readelf)
    commands = json.loads((path.parents[1] / "compile_commands.json").read_text())
    for command in commands:
        if "/src/" in command["file"] and "-D_FORTIFY_SOURCE=2" not in command["command"]:
            yield f"{Path(command['file']).name} is compiled without fortified functions"


def check_debug_file(path, sections, readelf):
    debug = path.with_name(path.name + ".debug")
    if ".gnu_debuglink" not in sections or not debug.exists():
        yield "there is no file with the debug information"
        return
    build_ids = [re.search(r"Build ID: (\w+)", output(readelf, "--notes", str(file))) for file in (path, debug)]
    if None in build_ids or build_ids[0][1] != build_ids[1][1]:
        yield "the debug information is that of another build"
    if ".debug_info" not in output(readelf, "--wide", "--sections", str(debug)):
        yield "the file beside it has no debug information"


CHECKS = {
    "exports": check_exports,
    "imports": check_imports,
    "hardening": check_hardening,
    "shipping": check_shipping,
}


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

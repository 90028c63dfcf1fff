#!/usr/bin/env python3
"""Checks that the folders include each other along the drawn arrows only.

usage: check_includes.py ROOT
"""

import re
import sys
from pathlib import Path

# Which folders a folder may include from, beside itself and what is installed on the machine.
ARROWS = {
    "include": set(),
    "platform": set(),
    "src": {"include", "platform"},
    "host": {"platform"},
    "cloudsim": set(),
    "tests/support": {"include", "platform"},
    "tests/support/telephone": {"tests/support", "src", "include", "platform"},
    "tests/unit": {"tests/support", "tests/support/telephone", "src", "include", "platform"},
    "tests/abi": {"tests/support", "src", "include", "platform"},
    "tests/fuzz": {"tests/unit", "host", "tests/support", "tests/support/telephone", "src", "include", "platform"},
    "tests/system": {"host", "include", "platform"},
    "tests/host": {"host", "tools/orvane-phone", "tools/events", "include", "platform"},
    "benchmarks": {"host", "tests/support", "tests/support/telephone", "tests/host", "tests/unit", "src", "include",
                   "platform"},
    "tools/orvane-cloud": {"cloudsim"},
    "tools/events": {"include"},
    "tools/orvane-ctl": {"host", "include", "platform", "tools/events"},
    "tools/orvane-phone": {"host", "include", "platform", "tools/events"},
}
# What is installed on the machine and yet not for a folder: the service reaches threads, clocks and the network through
# the platform alone, and the simulator reads and writes JSON by other means than its client.
CLOSED = {
    "src": re.compile(
        r"(thread|mutex|shared_mutex|condition_variable|future|atomic|chrono|pthread\.h|unistd\.h|netdb\.h|poll\.h"
        r"|sys/(socket|select|epoll|time)\.h|boost/(asio|beast)/.*|openssl/.*|sqlite3\.h|nlohmann/.*|spdlog/.*)$"
    ),
    "cloudsim": re.compile(r"jansson\.h$"),
}
SOURCES = {".h", ".hpp", ".cpp", ".cc", ".c"}
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


def sources(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in SOURCES) if folder.is_dir() else []


def owner(root, path):
    """The folder of ARROWS that a file belongs to; the longest match counts."""
    relative = path.resolve().relative_to(root).as_posix()
    matches = [name for name in ARROWS if relative.startswith(name + "/")]
    return max(matches, key=len) if matches else None


def resolve(root, source, text):
    """The file of this project that an include names, or None when it comes from elsewhere."""
    beside = source.parent / text
    if beside.is_file():
        return beside
    own = owner(root, source)
    nearest_first = sorted(ARROWS, key=lambda name: (name != own, name not in ARROWS[own]))
    for name in nearest_first:
        # Both the folder itself and its parent serve as roots: "data/PldsTags.h", "platform/data/PldsTags.h".
        for base in (root / name, (root / name).parent):
            if (base / text).is_file():
                return base / text
    return None


def violations(root):
    looked_at = 0
    for name, allowed in ARROWS.items():
        for source in sources(root / name):
            if owner(root, source) != name:
                continue
            for match in INCLUDE.finditer(source.read_text(encoding="utf-8")):
                looked_at += 1
                text = match.group(1) or match.group(2)
                if name in CLOSED and CLOSED[name].match(text):
                    yield f"{source.relative_to(root)}: {name} must not include {text}"
                target = resolve(root, source, text)
                home = owner(root, target) if target and root in target.resolve().parents else None
                if home and home != name and home not in allowed:
                    line = source.read_text(encoding="utf-8").count("\n", 0, match.start()) + 1
                    yield f"{source.relative_to(root)}:{line}: {name} must not include {text} of {home}"
                elif home is None and match.group(1) and target is None:
                    yield f"{source.relative_to(root)}: {text} is in no folder of this project"
    if looked_at == 0:
        yield "no include was found at all"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    found = list(violations(Path(sys.argv[1]).resolve()))
    for violation in found:
        print(violation)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()

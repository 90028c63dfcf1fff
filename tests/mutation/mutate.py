#!/usr/bin/env python3
"""Changes the service at random places in small ways, one at a time, and counts which changes the unit tests notice.

    tests/mutation/mutate.py [--count 400] [--seed N] [--build build/mutation] [--report FILE]

Works on a copy of the tree, so the checkout is never touched. A change that does not compile is drawn again and does
not count. Every survivor is printed with its file and line: it is either no real difference or a missing test.
"""

import argparse
import json
import random
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

COMPARISONS = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", " < ": " <= ", " > ": " >= "}
LOG_LEVELS = ("ERROR", "WARNING", "STATUS", "DETAIL", "DEBUG")


def turn_comparison(line, choose):
    places = [(match.start(), sign) for sign in COMPARISONS for match in re.finditer(re.escape(sign), line)]
    places = [(at, sign) for at, sign in places if "#include" not in line and "template" not in line and "<<" not in line]
    if not places:
        return None
    at, sign = choose(places)
    return line[:at] + COMPARISONS[sign] + line[at + len(sign):]


def turn_condition(line, choose):
    match = re.match(r"(\s*(?:\} else )?if \()(.*)(\) \{\s*)$", line)
    return f"{match[1]}!({match[2]}){match[3]}" if match and ";" not in match[2] and "=" not in match[2] else None


def swap_logic(line, choose):
    places = [match.start() for match in re.finditer(r" (&&|\|\|) ", line)]
    if not places:
        return None
    at = choose(places)
    return line[:at] + (" || " if line[at + 1] == "&" else " && ") + line[at + 4:]


def sets_initial_value(line):
    """Of a local that is written before it is read, as nearly all are here."""
    return re.match(r"\s+(const )?(int|bool|long long|std::size_t|unsigned\w*) \w+ = \w+;\s*$", line)


def move_constant(line, choose):
    if "ORVANE_LOG" in line or sets_initial_value(line) or "enum" in line or re.match(r"\s*(//|\"|#|case )", line):
        return None
    places = list(re.finditer(r"(?<![\w\".%\[])(\d+)(LL|\.0)?(?![\w\"%])", line))
    if not places:
        return None
    match = choose(places)
    return line[:match.start(1)] + str(int(match[1]) + 1) + line[match.end(1):]


def drop_call(line, choose):
    return "\n" if re.match(r"\s+[\w.\->]+(\([^()]*(\([^()]*\))?[^()]*\));\s*$", line) and "return" not in line else None


def drop_assignment(line, choose):
    return "\n" if re.match(r"\s+m_\w+(\.\w+)? = [^;{]+;\s*$", line) else None


def change_log_level(line, choose):
    match = re.search(r"ORVANE_LOG\((\w+)", line)
    if not match:
        return None
    other = choose([level for level in LOG_LEVELS if level != match[1]])
    return line[:match.start(1)] + other + line[match.end(1):]


def change_text(line, choose):
    places = [match for match in re.finditer(r'"([^"\\]{3,})"', line) if "#include" not in line]
    if not places:
        return None
    match = choose(places)
    at = match.start(1) + len(match[1]) // 2
    return line[:at] + ("x" if line[at] != "x" else "y") + line[at + 1:]


def turn_flag(line, choose):
    places = list(re.finditer(r"\b(true|false)\b", line))
    if not places or "ORVANE_LOG" in line or sets_initial_value(line):
        return None
    match = choose(places)
    return line[:match.start()] + ("false" if match[1] == "true" else "true") + line[match.end():]


MUTATIONS = (turn_comparison, turn_condition, swap_logic, move_constant, drop_call, drop_assignment, change_log_level,
             change_text, turn_flag)


def swap_calls(lines, index):
    """Two calls in a row, the other way round. Assignments in a row rarely depend on each other, and a lock that is taken
    one statement later is no difference on the one thread of a unit test: neither is changed."""
    call = re.compile(r"\s{4,}(?!CriticalSection|return|throw)[\w:.\->\[\]]+(<.*>)?\(.*\);\s*$")
    pair = lines[index:index + 2]
    return (pair[1], pair[0]) if len(pair) == 2 and all(call.match(line) for line in pair) else None


def draw(lines, generator):
    index = generator.randrange(len(lines))
    if lines[index].lstrip().startswith(("//", "///", "#")):
        return None
    if generator.randrange(len(MUTATIONS) + 1) == 0:
        swapped = swap_calls(lines, index)
        if swapped:
            return lines[:index] + list(swapped) + lines[index + 2:], index, "swap_calls"
        return None
    mutation = generator.choice(MUTATIONS)
    changed = mutation(lines[index], generator.choice)
    if changed is None or changed == lines[index]:
        return None
    return lines[:index] + [changed] + lines[index + 1:], index, mutation.__name__


def run(command, cwd, timeout):
    try:
        return subprocess.run(command, cwd=cwd, capture_output=True, text=True, timeout=timeout).returncode
    except subprocess.TimeoutExpired:
        return -1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=400)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 31))
    parser.add_argument("--build", default=str(ROOT / "build/mutation"))
    parser.add_argument("--report")
    parser.add_argument("--minutes", type=float, help="stop after that time, whatever the count")
    options = parser.parse_args()
    print(f"seed {options.seed}", flush=True)
    generator = random.Random(options.seed)

    tree = Path(options.build) / "tree"
    shutil.rmtree(tree, ignore_errors=True)
    tree.mkdir(parents=True)
    files = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split("\n")
    for name in filter(None, files):
        (tree / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, tree / name)
    build = Path(options.build) / "build"
    configure = ["cmake", "-S", str(tree), "-B", str(build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DORVANE_SERVICE_ONLY=ON", "-DCMAKE_CXX_FLAGS=-O0 -g0",
                 # A change is linked once, not with every test.
                 "-DBUILD_SHARED_LIBS=ON", "-DORVANE_VISIBILITY=default", "-DCMAKE_VISIBILITY_INLINES_HIDDEN=OFF",
                 "-DCMAKE_POSITION_INDEPENDENT_CODE=ON", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]
    compile_all = ["cmake", "--build", str(build), "-j2", "--target", "tier-unit"]
    test_all = ["ctest", "--test-dir", str(build), "-L", "unit", "-j2", "--stop-on-failure", "--timeout", "60"]
    if run(configure, tree, 300) or run(compile_all, tree, 1800) or run(test_all, tree, 600):
        sys.exit("mutate.py: the tree does not pass its unit tests as it is")

    sources = sorted((tree / "src").rglob("*.cpp"))
    texts = {path: path.read_text().splitlines(keepends=True) for path in sources}
    weights = [len(texts[path]) for path in sources]
    tried = set()
    noticed, survivors = 0, []
    end = time.monotonic() + (options.minutes or 1e9) * 60
    while noticed + len(survivors) < options.count and time.monotonic() < end:
        path = generator.choices(sources, weights)[0]
        drawn = draw(texts[path], generator)
        if drawn is None:
            continue
        lines, index, kind = drawn
        key = (path, "".join(lines))
        if key in tried:
            continue
        tried.add(key)
        path.write_text("".join(lines))
        if run(compile_all, tree, 900) == 0:
            where = f"{path.relative_to(tree)}:{index + 1}"
            if run(test_all, tree, 300) == 0:
                survivors.append({"where": where, "kind": kind, "was": texts[path][index].strip(),
                                  "is": lines[index].strip()})
                print(f"survived {where} {kind}: {texts[path][index].strip()}  ->  {lines[index].strip()}", flush=True)
            else:
                noticed += 1
        path.write_text("".join(texts[path]))
        if (noticed + len(survivors)) % 25 == 0:
            print(f"{noticed} of {noticed + len(survivors)} noticed so far", flush=True)

    total = noticed + len(survivors)
    print(f"{noticed} of {total} changes noticed ({100 * noticed / max(total, 1):.1f}%), seed {options.seed}")
    if options.report:
        Path(options.report).write_text(json.dumps({"seed": options.seed, "changes": total, "noticed": noticed,
                                                    "survivors": survivors}, indent=1) + "\n")


if __name__ == "__main__":
    main()

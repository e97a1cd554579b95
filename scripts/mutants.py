#!/usr/bin/env python3
"""Plants faults in src one at a time and tells which of them no test sees: mutants.py [N [SEED]].

The tree is copied, so that a run can be ended at any time. A mutant counts as seen when it does not
compile, or when a test fails, crashes or takes too long. Survivors are printed with their place; each
is either killed by a test or does not change what the library does.
"""
import random
import re
import resource
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
TREE, BUILD = WORK / "tree", WORK / "build"
# Seconds of processor time, which other work on the machine does not add to, for all tests; they take
# a tenth of it.
TIMEOUT = 300

# Kind, what is looked for in a line of code, what takes its place.
FAULTS = [
    ("border", r" < (?!<)", " <= "), ("border", r" <= ", " < "),
    ("border", r" > (?!>)", " >= "), ("border", r" >= ", " > "),
    ("border", r" \+ 1\b", ""), ("border", r" - 1\b", ""), ("border", r"\b2 \*", "1 *"),
    ("border", r"\bstd::min\b", "std::max"), ("border", r"\bstd::max\b", "std::min"),
    ("rounding", r" \+ 0\.5f?\b", ""), ("rounding", r" \+ (\w+) / 2\b", ""),
    ("rounding", r" / 100\b", " / 101"), ("rounding", r" >> (\d+)", r" >> (\1 - 1)"),
    ("saturation", r"\b255\b", "254"), ("saturation", r"\bAddSaturated\b", "Add"),
    ("channel", r"\[0\]", "[2]"), ("channel", r"\[2\]", "[1]"), ("channel", r"\b3 \*", "4 *"),
    ("logic", r" && ", " || "), ("logic", r" \|\| ", " && "), ("logic", r"\(!", "("),
    ("logic", r" == ", " != "), ("logic", r" != ", " == "),
    ("refusal", r"\breturn 0;", "return 1;"), ("refusal", r"\breturn 1;", "return 0;"),
    ("refusal", r"^(\s+)if \(.*\) (return.*;)$", r"\1;"),
    ("header", r"\bkInfoWidth\b", "kInfoHeight"), ("header", r"\bkInfoHeaderSize\b", "kCoreHeaderSize"),
    ("header", r"\bcore\(\)", "indexed()"), ("header", r"\buint16_t\(", "uint32_t("),
    ("tail", r"\bcount - (\w+)\b", r"count - \1 - 1"), ("tail", r" \+= kLanes\b", " += 2 * kLanes"),
    ("arithmetic", r" \+ (?=[a-z(])", " - "), ("arithmetic", r" - (?=[a-z(])", " + "),
    ("arithmetic", r" & (?=[\w(])", " | "), ("call", r"^(\s+)[\w.>:-]+\([^{}]*\);$", r"\1;"),
]
SKIPPED = re.compile(r"^\s*(//|#|\*|using |static_assert|assert|template|namespace|inline constexpr|@)")


def code_lines():
    for path in sorted((ROOT / "src").rglob("*")):
        # What the tests of this machine do not run.
        if path.suffix not in (".cpp", ".h", ".inc") or "gdi" in str(path) or "exports" in str(path):
            continue
        foreign = False  # inside of what other processors compile
        for number, line in enumerate(path.read_text().split("\n")):
            if line.startswith(("#if", "#el", "#endif")):
                foreign = re.search("#(el)?if.*(aarch64|wasm|_WIN32)", line) is not None
            if line.strip() and not foreign and not SKIPPED.match(line):
                yield path.relative_to(ROOT), number, line


def mutants(count, seed):
    """As many of each kind as there are, up to an equal share, in random order."""
    kinds = {}
    for path, number, line in code_lines():
        for kind, pattern, by in FAULTS:
            code = line.split(" //")[0]
            places = [m for m in re.finditer(pattern, code)]
            for m in places:
                changed = code[: m.start()] + m.expand(by) + code[m.end() :]
                kinds.setdefault(kind, []).append((kind, path, number, line, changed))
    rng = random.Random(seed)
    for found in kinds.values():
        rng.shuffle(found)
    chosen = []
    while len(chosen) < count and any(kinds.values()):
        for found in kinds.values():
            if found and len(chosen) < count:
                chosen.append(found.pop())
    return chosen


def limit_time():
    resource.setrlimit(resource.RLIMIT_CPU, (TIMEOUT, TIMEOUT))


def run(*command, prepare=None):
    return subprocess.run(command, cwd=WORK, capture_output=True, preexec_fn=prepare).returncode


def build():
    return run("cmake", "--build", str(BUILD), "--target", "ombrilo_tests")


def tests_pass():
    """First those that see most faults soonest."""
    return all(run(str(BUILD / "ombrilo_tests"), f"--gtest_filter={tests}", "--gtest_fail_fast",
                   "--gtest_brief=1", prepare=limit_time) == 0 for tests in ("Sameness*", "-Sameness*"))


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 30
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    WORK.mkdir(parents=True, exist_ok=True)
    shutil.rmtree(TREE, ignore_errors=True)
    shutil.copytree(ROOT, TREE, ignore=shutil.ignore_patterns("build", ".git"))
    if run("cmake", "-S", str(TREE), "-B", str(BUILD), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
           "-DOMBRILO_TESTS=ON", "-DOMBRILO_TOOLS=OFF") != 0 or build() != 0 or not tests_pass():
        sys.exit("The tests do not pass without a fault, so there is nothing to compare with")
    totals, survivors = {}, []
    for kind, path, number, line, changed in mutants(count, seed):
        file = TREE / path
        original = file.read_text()
        lines = original.split("\n")
        lines[number] = changed
        file.write_text("\n".join(lines))
        outcome = "invalid" if build() != 0 else "survived" if tests_pass() else "seen"
        file.write_text(original)
        totals.setdefault(kind, {"seen": 0, "survived": 0, "invalid": 0})[outcome] += 1
        print(f"{outcome:9} {kind:11} {path}:{number + 1}", flush=True)
        if outcome == "survived":
            survivors.append(f"{path}:{number + 1} ({kind})\n  - {line.strip()}\n  + {changed.strip()}")
    print(f"\n{'kind':12}{'seen':>6}{'survived':>10}{'invalid':>9}")
    for kind, n in totals.items():
        print(f"{kind:12}{n['seen']:6}{n['survived']:10}{n['invalid']:9}")
    if survivors:
        print("\nNo test sees these:\n" + "\n".join(survivors))


if __name__ == "__main__":
    main()

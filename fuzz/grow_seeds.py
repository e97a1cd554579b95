#!/usr/bin/env python3
"""Grows fuzz/seeds by the inputs of a fuzzer's corpus that reach most beyond them.

    fuzz/grow_seeds.py TARGET [COUNT [CORPUS]]

A corpus holds thousands of inputs, most of which differ by a counter or an edge. Of those that reach edges of their own,
the COUNT (100) best are added: the first reaches most edges that no seed reaches, the next most of the others, and so
on. Their names are hashes, as in the corpus.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def merge(fuzzer, scratch, *arguments):
    command = [fuzzer, "-use_counters=0", f"-artifact_prefix={scratch}/", *arguments]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def edges(fuzzer, file, scratch):
    """The edges that one input reaches, as libFuzzer numbers them."""
    for folder in ("in", "out"):
        shutil.rmtree(scratch / folder, ignore_errors=True)
        (scratch / folder).mkdir()
    shutil.copy(file, scratch / "in")
    control = scratch / "control"
    control.unlink(missing_ok=True)
    merge(fuzzer, scratch, "-merge=1", f"-merge_control_file={control}", scratch / "out", scratch / "in")
    lines = (line.split() for line in control.read_text().splitlines())
    return {int(edge) for words in lines if words[:1] == ["FT"] for edge in words[2:]}


def main():
    target = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    corpus = pathlib.Path(sys.argv[3]) if len(sys.argv) > 3 else ROOT / "build/fuzz/corpus" / target
    fuzzer = ROOT / "build/fuzz" / f"fuzz_{target}"
    seeds = ROOT / "fuzz/seeds" / target
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        (scratch / "reduced").mkdir()
        merge(fuzzer, scratch, "-set_cover_merge=1", scratch / "reduced", corpus)
        reached = set().union(*(edges(fuzzer, seed, scratch) for seed in seeds.iterdir()))
        beyond = {file: edges(fuzzer, file, scratch) - reached for file in (scratch / "reduced").iterdir()}
        print(f"The seeds reach {len(reached)} edges, the corpus {len(reached.union(*beyond.values()))}.")
        for _ in range(min(count, len(beyond))):
            best = max(beyond, key=lambda file: (len(beyond[file]), file.name))
            if not beyond[best]:
                break
            reached |= beyond.pop(best)
            beyond = {file: own - reached for file, own in beyond.items()}
            shutil.copy(best, seeds)
        print(f"With {len(list(seeds.iterdir()))} seeds it is {len(reached)} edges.")


if __name__ == "__main__":
    main()

"""Steps of `omb` on many files, by the machines of a Dask cluster.

    python3 -m ombrilo.fleet 'in/**/*.tif' out/ transformat gray binary
    python3 -m ombrilo.fleet --scheduler tcp://host:8786 'in/*.tif' out/ gray scale=50%

Each file is the work of the program omb on one worker, so that results are those of `omb apply`.
Workers see the files under the same paths and have omb on their PATH (or under --omb). Without a
scheduler, the cluster is this machine.

A run can be stopped at any time and started again: what is finished is not done again. Files that
cannot be done are listed in failures.csv in the output folder; a worker that dies loses nothing, as
its files go to others.
"""

from __future__ import annotations

import argparse
import csv
import glob
import json
import os
import pathlib
import subprocess
import sys
from typing import Any, Iterator

JOURNAL, FAILURES = "fleet.json", "failures.csv"
IN_FLIGHT = 2000  # files that the scheduler knows at a time


def run(omb: str, source: str, target: str, steps: list[str]) -> str | None:
    """Does one file, on a worker. Returns what went wrong."""
    os.makedirs(os.path.dirname(target), exist_ok=True)
    try:
        # omb writes to a temporary file that takes the target's name once it is complete.
        done = subprocess.run(
            [omb, "apply", source, target, *steps],
            stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace",
        )
    except OSError as error:
        return f"{omb}: {error.strerror}"
    if done.returncode == 0:
        return None
    return done.stderr.strip() or f"omb ended with status {done.returncode}"


def files_of(pattern: str, out: str, format: str | None) -> dict[str, str]:
    """Input -> output for every file; folders below the pattern's fixed part are kept. Files in the
    output folder are results, whatever the pattern says."""
    fixed = pathlib.Path(*_until_magic(pathlib.Path(pattern).parts[:-1]))
    results = os.path.join(os.path.abspath(out), "")
    jobs: dict[str, str] = {}
    seen: dict[str, str] = {}
    for name in sorted(glob.glob(pattern, recursive=True)):
        if not os.path.isfile(name):
            continue
        source = os.path.abspath(name)
        below = pathlib.Path(os.path.relpath(name, fixed))
        target = os.path.abspath(
            os.path.join(out, below.with_suffix(f".{format}") if format else below))
        if target in seen:
            raise SystemExit(f"fleet: {seen[target]} and {name} would both become {target}")
        if target == source:
            raise SystemExit(f"fleet: {name} would be replaced by its own result")
        if source.startswith(results):
            continue
        seen[target] = name
        jobs[source] = target
    return jobs


def _until_magic(parts: tuple[str, ...]) -> Iterator[str]:
    for part in parts:
        if glob.has_magic(part):
            return
        yield part


def is_finished(source: str, target: str, since: float) -> bool:
    try:
        return os.path.getmtime(target) >= max(os.path.getmtime(source), since)
    except OSError:
        return False


def begin(out: pathlib.Path, steps: list[str], again: bool) -> float:
    """Since when results are those of these steps: the time of the journal, by the clock of the file
    system that holds the results, too."""
    journal = out / JOURNAL
    if journal.exists() and not again:
        before = json.loads(journal.read_text())["steps"]
        if before != steps:
            raise SystemExit(
                f"fleet: {out} holds results of '{' '.join(before)}'; take another folder, or "
                "--again to do all files anew")
    else:
        partial = journal.with_suffix(".new")
        partial.write_text(json.dumps({"steps": steps}))
        os.replace(partial, journal)
    return os.path.getmtime(journal)


def do_all(client: Any, jobs: dict[str, str], omb: str, steps: list[str]) -> dict[str, str]:
    """Runs the jobs. Returns reasons by file for those that failed."""
    from distributed import as_completed

    waiting = iter(jobs.items())
    failures: dict[str, str] = {}
    sources: dict[str, str] = {}

    def submit() -> Any:
        for source, target in waiting:
            future = client.submit(run, omb, source, target, steps, pure=False)
            sources[future.key] = source
            return future
        return None

    first = [future for _ in range(IN_FLIGHT) if (future := submit()) is not None]
    done = 0
    completed = as_completed(first)
    for future in completed:
        source = sources.pop(future.key)
        error = future.exception()
        reason = str(error) if error is not None else future.result()
        if reason:
            failures[source] = reason
        done += 1
        if (following := submit()) is not None:
            completed.add(following)
        end = "\n" if done == len(jobs) or not sys.stderr.isatty() else "\r"
        if end == "\r" or done == len(jobs) or done % 100 == 0:
            print(f"{done} of {len(jobs)} files, {len(failures)} failed", end=end, file=sys.stderr)
        future.release()
    return failures


def main(words: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(
        prog="python3 -m ombrilo.fleet", description=__doc__.split("\n")[0],
        epilog="'omb list' tells which steps there are.")
    parser.add_argument("files", help="a pattern such as 'in/**/*.tif', in quotes")
    parser.add_argument("out", help="the folder for the results")
    parser.add_argument("steps", nargs="+", help="such as gray scale=50%% binary")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster")
    parser.add_argument("--workers", type=int, help="on this machine, without a scheduler")
    parser.add_argument("--format", choices=["bmp", "png", "jpg", "tif"],
                        help="of the results; that of each file if not given")
    parser.add_argument("--omb", default="omb", metavar="PATH", help="the program on the workers")
    parser.add_argument("--again", action="store_true", help="do finished files again, too")
    options = parser.parse_args(words)

    jobs = files_of(options.files, options.out, options.format)
    if not jobs:
        raise SystemExit(f"fleet: no file is called {options.files}")
    out = pathlib.Path(options.out)
    out.mkdir(parents=True, exist_ok=True)
    since = begin(out, options.steps, options.again)
    todo = {s: t for s, t in jobs.items() if options.again or not is_finished(s, t, since)}

    failures: dict[str, str] = {}
    if todo:
        from distributed import Client

        where: dict[str, Any] = {"address": options.scheduler}
        if not options.scheduler:
            where = {"processes": False, "threads_per_worker": 1, "dashboard_address": None,
                     "n_workers": options.workers or os.cpu_count()}
        with Client(**where) as client:
            failures = do_all(client, todo, options.omb, options.steps)
    report = out / FAILURES
    report.unlink(missing_ok=True)
    if failures:
        with report.open("w", newline="") as file:
            csv.writer(file).writerows([("file", "reason"), *sorted(failures.items())])
    print(f"{len(todo) - len(failures)} done, {len(jobs) - len(todo)} were finished, "
          f"{len(failures)} failed" + (f": see {report}" if failures else ""))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

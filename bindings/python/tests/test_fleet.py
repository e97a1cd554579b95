"""The fleet on a real scheduler with two workers, one of which is killed on the way."""

import csv
import os
import pathlib
import signal
import subprocess
import sys
import time

import numpy as np
import ombrilo
import pytest

OMB = os.environ.get("OMB", "omb")
STEPS = ["rotate=7,bicubic", "gray", "binary"]
COUNT = 40


@pytest.fixture
def cluster(tmp_path):
    """The scheduler's address and its two workers."""
    address = tmp_path / "scheduler.json"
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    dask = [sys.executable, "-m"]
    scheduler = subprocess.Popen(
        [*dask, "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", "0",
         "--no-dashboard", "--scheduler-file", address], cwd=tmp_path, **quiet)
    workers = [subprocess.Popen(
        [*dask, "distributed.cli.dask_worker", "--scheduler-file", address, "--nthreads", "1",
         "--no-nanny", "--no-dashboard"], cwd=tmp_path, **quiet) for _ in range(2)]
    yield address, workers
    for process in [*workers, scheduler]:
        process.kill()
        process.wait()


def fleet(*words, **options):
    return subprocess.Popen([sys.executable, "-m", "ombrilo.fleet", "--omb", OMB, *words],
                            stdout=subprocess.PIPE, text=True, **options)


def test_a_killed_worker_loses_nothing(tmp_path, cluster):
    from distributed import Client

    address, workers = cluster
    folder, out = tmp_path / "in", tmp_path / "out"
    (folder / "below").mkdir(parents=True)
    pixels = np.random.default_rng(1).integers(0, 256, (400, 500, 3), np.uint8)
    for i in range(COUNT):
        name = f"below/{i}.bmp" if i % 2 else f"{i}.bmp"
        ombrilo.Image.from_array(np.roll(pixels, i, axis=1)).save(folder / name)
    (folder / "broken.bmp").write_bytes(b"BM and nothing else")
    pattern = str(folder / "**" / "*.bmp")

    with Client(scheduler_file=str(address)) as client:
        client.wait_for_workers(2)
        scheduler = client.scheduler.address
    run = fleet("--scheduler", scheduler, "--format", "png", pattern, str(out), *STEPS)
    # Both work by now, and neither is done.
    while len(list(out.glob("**/*.png"))) < 5:
        assert run.poll() is None
        time.sleep(0.01)
    workers[0].send_signal(signal.SIGKILL)
    finished = len(list(out.glob("**/*.png")))
    text, _ = run.communicate(timeout=100)
    assert finished < COUNT
    assert run.returncode == 1
    assert f"{COUNT} done, 0 were finished, 1 failed" in text
    with (out / "failures.csv").open() as file:
        (source, reason), = list(csv.reader(file))[1:]
    assert source == str(folder / "broken.bmp") and "broken.bmp" in reason

    for i in (0, 1, COUNT - 1):
        name = f"below/{i}" if i % 2 else f"{i}"
        one = tmp_path / "one.png"
        subprocess.run([OMB, "apply", folder / f"{name}.bmp", one, *STEPS], check=True)
        assert (out / f"{name}.png").read_bytes() == one.read_bytes()

    # Again, on this machine: one result is missing, one input is newer, one cannot be done.
    (out / "0.png").unlink()
    later = time.time() + 10
    os.utime(folder / "below" / "1.bmp", (later, later))
    before = (out / "2.png").stat().st_mtime_ns
    run = fleet("--workers", "2", "--format", "png", pattern, str(out), *STEPS)
    text, _ = run.communicate(timeout=100)
    assert f"2 done, {COUNT - 2} were finished, 1 failed" in text
    assert (out / "2.png").stat().st_mtime_ns == before
    (folder / "broken.bmp").unlink()
    os.utime(folder / "below" / "1.bmp", (before / 1e9, before / 1e9))
    run = fleet("--format", "png", pattern, str(out), *STEPS)
    text, _ = run.communicate(timeout=100)
    assert run.returncode == 0 and f"0 done, {COUNT} were finished, 0 failed" in text
    assert not (out / "failures.csv").exists()
    # A result of other steps, left by a run with --again that was stopped.
    since = (out / "fleet.json").stat().st_mtime
    os.utime(folder / "4.bmp", (since - 10, since - 10))
    os.utime(out / "4.png", (since - 5, since - 5))
    run = fleet("--format", "png", pattern, str(out), *STEPS)
    assert f"1 done, {COUNT - 1} were finished, 0 failed" in run.communicate(timeout=100)[0]
    other = fleet("--format", "png", pattern, str(out), "invert", stderr=subprocess.PIPE)
    assert "holds results of" in other.communicate(timeout=100)[1] and other.returncode == 1


def test_results_are_no_inputs(tmp_path):
    ombrilo.Image(5, 4).save(tmp_path / "a.bmp")
    for expected in ("1 done, 0 were finished", "0 done, 1 were finished"):
        run = fleet(str(tmp_path / "**" / "*.bmp"), str(tmp_path / "out"), "gray")
        assert expected in run.communicate(timeout=100)[0]


def test_names_that_collide_are_refused(tmp_path):
    for name in ("a.bmp", "a.tif"):
        pathlib.Path(tmp_path / name).write_bytes(b"")
    run = fleet("--format", "png", str(tmp_path / "a.*"), str(tmp_path / "out"), "gray",
                stderr=subprocess.PIPE)
    assert "would both become" in run.communicate()[1]

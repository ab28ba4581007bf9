"""Batches on a real cluster: a scheduler and worker processes of Dask over TCP. VELQUOR_COMMAND names the command;
VELQUOR_CLUSTER_SECTIONS how many sections (2000)."""
import contextlib
import itertools
import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).parents[2]
sys.path.insert(0, str(ROOT / "bindings" / "python"))
import velquor  # noqa: E402

from distributed import Client  # noqa: E402

COUNT = int(os.environ.get("VELQUOR_CLUSTER_SECTIONS", "2000"))
STEEL = {"name": "steel", "E": 210000, "density": 7.85e-6, "strength": 235}


def sections(count):
    """A few hundred unlike ones, over and over; one in a hundred is wrong."""
    for k in range(count):
        if k % 100 == 7:
            yield {"id": f"wrong {k}", "name": f"IPE {k % 300 + 1001}"}
        elif k % 3 == 0:
            yield ("IPE 300", "HEB 200", "UPE 160", "IPE 80")[k // 3 % 4]
        else:
            h, b = 100 + k % 150, 60 + k % 7
            yield {"id": f"plate {k}", "section": {"materials": [STEEL], "parts": [
                {"outline": [[0, 0], [b, 0], [b, 10], [10, 10], [10, h], [0, h]]}]}}


def bits(result):
    """All that there is of a result."""
    if isinstance(result, velquor.SectionError):
        return result.kind, result.at, result.message, result.remedy
    return result.to_dict()


class Cluster:
    """A scheduler and workers, each with its nanny; ended with the test, and whatever they started."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.address = f"tcp://127.0.0.1:{free.getsockname()[1]}"
        self.started = []
        self.start("dask-scheduler", "--host", self.address, "--no-dashboard")

    def start(self, program, *arguments):
        path = os.pathsep.join(filter(None, (str(ROOT / "bindings" / "python"), os.environ.get("PYTHONPATH"))))
        with open(pathlib.Path(self.folder.name) / f"{len(self.started)}.log", "wb") as log:
            process = subprocess.Popen([program, *arguments], stdout=log, stderr=log, start_new_session=True,
                                       cwd=self.folder.name, env={**os.environ, "PYTHONPATH": path})
        self.started.append(process)
        return process

    def add_worker(self, threads=1):
        return self.start("dask-worker", self.address, "--nthreads", str(threads), "--host", "127.0.0.1", "--no-dashboard",
                          "--local-directory", self.folder.name, "--death-timeout", "60")

    def close(self):
        for process in reversed(self.started):
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGTERM)
        for process in self.started:
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        self.folder.cleanup()


class OnACluster(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cluster = Cluster()
        cls.addClassCleanup(cls.cluster.close)
        for _ in range(2):
            cls.cluster.add_worker()
        cls.client = Client(cls.cluster.address, timeout=60, set_as_default=False)
        cls.addClassCleanup(cls.client.close)
        cls.client.wait_for_workers(2, timeout=60)

    def test_every_section_once_with_the_bits_of_one_machine_while_workers_die_and_come(self):
        wishes = {"levels": 1, "values": ["A", "Iy", "It"]}
        pids = self.client.run(os.getpid)
        chunk = max(5, COUNT // 100)
        iterator = velquor.batch(sections(COUNT), client=self.client, chunk=chunk, **wishes)
        start = time.monotonic()
        results = [next(iterator) for _ in range(COUNT // 3)]
        os.kill(next(iter(pids.values())), signal.SIGKILL)  # its nanny starts another
        results += [next(iterator) for _ in range(COUNT // 5)]
        self.cluster.add_worker(threads=2)
        results += iterator
        taken = time.monotonic() - start
        self.client.wait_for_workers(3, timeout=60)

        self.assertEqual(sorted(result.index for result in results), list(range(COUNT)))
        ids = {k: given.get("id", k) if isinstance(given, dict) else k for k, given in enumerate(sections(COUNT))}
        self.assertEqual({result.index: result.id for result in results}, ids)
        start = time.monotonic()
        expected = {result.index: bits(result) for result in velquor.batch(sections(COUNT), **wishes)}
        print(f"{COUNT} sections: {taken:.1f} s on the cluster, {time.monotonic() - start:.1f} s by velquor.batch", end=" ")
        self.assertEqual({result.index: bits(result) for result in results}, expected)
        wrong = [result for result in results if isinstance(result, velquor.SectionError)]
        self.assertEqual({result.kind for result in wrong}, {"refused"})
        self.assertEqual(len(wrong), len(range(7, COUNT, 100)))

    def test_is_read_as_it_is_needed_and_can_be_left(self):
        read = []
        endless = ((read.append(1), "IPE 80")[1] for _ in iter(int, 1))
        iterator = velquor.batch(endless, client=self.client, chunk=3, levels=1, values=["A"])
        areas = {next(iterator).A for _ in range(20)}
        iterator.close()
        self.assertEqual(len(areas), 1)
        self.assertLess(len(read), 100)
        for _ in range(100):
            if not self.client.run_on_scheduler(lambda dask_scheduler: list(dask_scheduler.tasks)):
                break
            time.sleep(0.1)
        else:
            self.fail("tasks are left")

    def test_what_is_no_request_and_what_no_worker_survives(self):
        results = list(velquor.batch([7, {"name": float("inf")}, "IPE 80"], client=self.client, levels=1, chunk=2))
        kinds = {result.index: getattr(result, "kind", "") for result in results}
        self.assertEqual(kinds, {0: "request", 1: "request", 2: ""})
        with self.assertRaisesRegex(OSError, "no command /missing"):
            list(velquor.batch(["IPE 80"], client=self.client, command="/missing", retries=0))
        with tempfile.TemporaryDirectory() as folder:  # ends the Dask worker in the place of velquor
            deadly = pathlib.Path(folder) / "velquor"
            deadly.write_text('#!/bin/sh\nkill -9 "$PPID"\n')
            deadly.chmod(0o755)
            results = list(velquor.batch(["IPE 80", "IPE 100"], client=self.client, command=str(deadly)))
        self.assertEqual({(result.index, result.kind) for result in results}, {(0, "crashed"), (1, "crashed")})
        self.assertIn("allowed-failures", results[0].remedy)
        self.assertAlmostEqual(next(velquor.batch(["IPE 80"], client=self.client)).A, 764, delta=1)

    def test_without_the_cluster(self):
        with self.assertRaisesRegex(TypeError, "client: a dask.distributed.Client .* not 'tcp:"):
            next(velquor.batch(["IPE 80"], client=self.cluster.address))
        client = Client(self.cluster.address, timeout=60, set_as_default=False)
        for count in 10**6, 6:  # more are to come, the last are under way
            iterator = velquor.batch(itertools.repeat("IPE 80", count), client=client, chunk=2, levels=1, values=["A"])
            next(iterator)
            client.close()
            with self.assertRaisesRegex(ConnectionError, "client: it was closed"):
                list(iterator)
            client = Client(self.cluster.address, timeout=60, set_as_default=False)
        client.close()


if __name__ == "__main__":
    unittest.main()

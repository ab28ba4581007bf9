"""Figures of many sections: python3 bench/figures.py BUILD. Prints one table in Markdown.

BUILD is a release build with the command and the benchmarks. Rates that are compared are measured in turns within one
run. Needs numpy, and Dask's distributed for its row.
"""
import json
import math
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

BUILD = pathlib.Path(sys.argv[1]).resolve()
COMMAND = str(BUILD / "tool" / "velquor")
os.environ["VELQUOR_COMMAND"] = COMMAND
sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "bindings" / "python"))
import velquor  # noqa: E402

CORES = len(os.sched_getaffinity(0))
ROW = "| {} | {} |"


def catalogue():
    text = subprocess.run([COMMAND, "profiles"], capture_output=True, text=True, check=True).stdout
    return [re.split(r"\s{2,}", line)[0] for line in text.splitlines()]


def lines_of(names):
    return "".join(json.dumps({"id": i, "name": name}) + "\n" for i, name in enumerate(names))


def seconds_of(lines, *options):
    start = time.perf_counter()
    done = subprocess.run([COMMAND, "worker", *options], input=lines, capture_output=True, text=True, check=True)
    seconds = time.perf_counter() - start
    answers = done.stdout.splitlines()
    assert len(answers) == lines.count("\n") and not any('"error"' in answer for answer in answers)
    return seconds


def spread(values, form="{:.3g}"):
    return form.format(statistics.median(values)) + " (" + " to ".join(form.format(v) for v in (min(values), max(values))) + ")"


def rates(names, rounds=3):
    lines = lines_of(names)
    one, all_cores = [], []
    for _ in range(rounds):  # in turns
        one.append(len(names) / seconds_of(lines, "--jobs", "1"))
        all_cores.append(len(names) / seconds_of(lines, "--jobs", str(CORES)))
    yield "sections a second, one worker, whole catalogue", spread(one)
    yield f"sections a second, {CORES} workers", spread(all_cores)
    yield f"{CORES} workers over one", spread([b / a for a, b in zip(one, all_cores)])


def first_result(rounds=10):
    times = [seconds_of(lines_of(["IPE 300"]), *options) * 1e3 for options in [[]] * rounds + [["--jobs", str(CORES)]] * rounds]
    yield "start to first result, one worker, ms", spread(times[:rounds])
    yield f"the same of {CORES} supervised workers, ms", spread(times[rounds:])


def protocol(rounds=5):
    text = [subprocess.run([BUILD / "bench" / "bench_protocol"], capture_output=True, text=True, check=True).stdout
            for _ in range(rounds)]
    request, answer = ([float(re.search(rf"{word} ([\d.]+)", t)[1]) for t in text] for word in ("request", "answer"))
    # The way through two pipes and a supervisor: of lines that are refused at once, with one under way.
    worker = subprocess.Popen([COMMAND, "worker", "--jobs", "1"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    trips = []
    for _ in range(100 + 400 * rounds):
        start = time.perf_counter()
        worker.stdin.write('{"id":1,"name":"none"}\n')
        worker.stdin.flush()
        worker.stdout.readline()
        trips.append((time.perf_counter() - start) * 1e3)
    worker.communicate()
    trip = [statistics.median(trips[100 + 400 * k:500 + 400 * k]) for k in range(rounds)]
    yield "protocol for a section, ms: request", spread(request)
    yield "answer", spread(answer)
    yield "way there and back", spread(trip)


def processor_time(pid):
    try:
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    except (FileNotFoundError, ProcessLookupError):  # it has ended
        return 0
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", pathlib.Path(f"/proc/{pid}/status").read_text())[1]) / 1024


def memory(names, sections=3500, rounds=3):
    once = len(names) // 100 + 1  # the whole catalogue was seen
    sizes = []
    for _ in range(rounds):
        worker = subprocess.Popen([COMMAND, "worker"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        sizes.append([])
        for i in range(sections):
            worker.stdin.write(json.dumps({"id": i, "name": names[i % len(names)], "values": ["A"]}) + "\n")
            worker.stdin.flush()
            worker.stdout.readline()
            if i % 100 == 99:
                sizes[-1].append(resident(worker.pid))
        worker.communicate()
    for what, at in ((f"memory of a worker, MB: after {once * 100} sections", lambda s: s[once - 1]),
                     (f"after {sections}", lambda s: s[-1]), ("most between", lambda s: max(s[once - 1:]))):
        yield what, spread([at(s) for s in sizes])


def batch(count=4000, rounds=5):
    """A sweep of I-sections of which none is like another."""
    side = round(count ** 0.5 / 10)
    steps = (10 * side, count // (10 * side))
    total = steps[0] * steps[1]
    sweep = {"shape": "i", "parameters": {"b": 150, "tw": 7.1, "tf": 10.7, "r": 15, "h": 300},
             "sweep": {"h": {"from": 200, "to": 400, "steps": steps[0]}, "b": {"from": 100, "to": 200, "steps": steps[1]}}}
    rates, own, again = [], [], []
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder, "sweep.json")
        source.write_text(json.dumps(sweep))
        for k in range(rounds):
            results = pathlib.Path(folder, f"results{k}.sqlite")
            start = time.perf_counter()
            writer = subprocess.Popen([COMMAND, "batch", source, "-o", results, "--quiet"])
            of_writer = 0
            while writer.poll() is None:
                of_writer = max(of_writer, processor_time(writer.pid))
                time.sleep(0.05)
            rates.append(total / (time.perf_counter() - start))
            assert writer.returncode == 0
            own.append(of_writer / total * 1e3)
            start = time.perf_counter()
            subprocess.run([COMMAND, "batch", source, "-o", results, "--quiet"], check=True)
            again.append(total / (time.perf_counter() - start))
        size = results.stat().st_size / total
    yield f"batch of {total} sections, {CORES} workers: sections a second", spread(rates)
    yield "of it the one process that keeps the results, ms of processor for a section", spread(own)
    yield "the same once more, all found there: sections a second", spread(again, "{:.0f}")
    yield "bytes of its file for a section, a count", f"{size:.0f}"
    for cores in (CORES, 16, 64, 256):
        rate = statistics.median(rates) / CORES * cores
        batches = math.ceil(rate * statistics.median(own) / 1e3)  # each with a processor of its own for its results
        yield f"1e7 sections on {cores} cores, computed from these medians", \
            f"{1e7 / rate / 3600:.1f} h at {rate:.0f} a second, in {batches} batch{'es' * (batches > 1)}; " \
            f"{1e7 * size / 1e9:.0f} GB"


def dask(count=4000, rounds=5):
    """Lines that are refused at once: what remains is the way."""
    try:
        from distributed import Client, LocalCluster
    except ImportError:
        return
    wrong = [{"name": "none"}] * count
    times = {"alone": [], "Dask": []}
    with LocalCluster(n_workers=1, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
            Client(cluster) as client:
        ways = (("alone", {"jobs": 1}), ("Dask", {"client": client, "chunk": 100}))
        for _, options in ways:
            for _ in velquor.batch(wrong[:1000], **options):  # started
                pass
        for _ in range(rounds):  # in turns
            for name, options in ways:
                start = time.perf_counter()
                assert sum(1 for _ in velquor.batch(wrong, **options)) == count
                times[name].append((time.perf_counter() - start) / count * 1e3)
    yield "Dask for a section with 100 in a task, ms", spread(times["Dask"])
    yield "the same without Dask", spread(times["alone"])


if __name__ == "__main__":
    names = catalogue()
    print("| | |\n|---|---|")
    for rows in (rates(names), first_result(), protocol(), memory(names), batch(), dask()):
        for row in rows:
            print(ROW.format(*row), flush=True)

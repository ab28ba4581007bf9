"""Supervised workers and what befalls them: VELQUOR_COMMAND names the command, VELQUOR_FAULTY one with a mesher that
crashes, hangs and grows where a section's name says so (faulty_mesher.cpp)."""
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

COMMAND = os.environ["VELQUOR_COMMAND"]
FAULTY = os.environ["VELQUOR_FAULTY"]
PATIENCE = 60  # seconds, where something must happen at once: machines may be busy
LONGEST = 1 << 24


def request(number, name="", **more):
    section = {"name": name, "materials": [{"name": "steel", "E": 210000}],
               "parts": [{"shape": "rectangle", "parameters": {"b": 10, "h": 20 + (number if name == "" else 0)}}]}
    return {"id": number, "section": section, "levels": 1, "values": ["A", "Iy"], **more}


def lines(requests):
    return "".join(json.dumps(r) + "\n" for r in requests)


def padded(number, size):
    line = json.dumps({"id": number, "name": "IPE 300", "levels": 1, "values": ["A"]})
    return line[:-1] + " " * (size - len(line)) + "}\n"


def answers_by_id(test, text):
    test.assertTrue(text == "" or text.endswith("\n"))
    answers = [json.loads(line) for line in text.splitlines()]
    by_id = {answer["id"]: answer for answer in answers}
    test.assertEqual(len(by_id), len(answers), "answered twice")
    return by_id


def plain(requests):
    """The answers of one worker without a supervisor."""
    done = subprocess.run([COMMAND, "worker"], input=lines(requests), capture_output=True, encoding="utf-8", check=True)
    return {answer["id"]: answer for answer in map(json.loads, done.stdout.splitlines())}


def is_alive(process):
    try:
        state = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return False
    return state not in "ZX"


def workers_of(process):
    return [int(n) for n in pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()]


class Supervised(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def start(self, *options, **more):
        def heed():  # also where the tests run in the background
            signal.signal(signal.SIGINT, signal.SIG_DFL)
        process = subprocess.Popen([FAULTY, "worker", *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, encoding="utf-8", preexec_fn=heed, start_new_session=True,
                                   **more)
        def end():
            process.kill()
            process.communicate()
        self.addCleanup(end)
        return process

    def until(self, holds, what):
        end = time.monotonic() + PATIENCE
        while not holds():
            self.assertLess(time.monotonic(), end, what)
            time.sleep(0.01)

    def hung_worker(self, file):
        """The process that hangs over the section "hang once FILE", once it does."""
        self.until(file.exists, "nothing hangs")
        return int(file.read_text())

    def test_faults_concern_only_the_section_that_made_them(self):
        faults = [request(1001, "crash"), request(1002, "exit"), request(1003, f"fork {self.folder}"),
                  request(1004, "grow"), request(1005, "grow shared"),
                  request(1006, f"crash once {self.folder / 'once'}"),
                  {"id": 1007, "nmae": "IPE 300"}]
        good = [request(n) for n in range(50)]
        asked = [r for n, r in enumerate(good) for r in [r] + faults[n // 7:n // 7 + 1] * (n % 7 == 0)]
        asked += [r for r in faults if r not in asked]
        # As a parent would have it that does not care for its children.
        done = subprocess.run([FAULTY, "worker", "--jobs", "3", "--timeout", "4", "--memory", "700"],
                              input=lines(asked), capture_output=True, encoding="utf-8", timeout=2 * PATIENCE,
                              preexec_fn=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        answers = answers_by_id(self, done.stdout)
        self.assertEqual(sorted(answers), sorted(r["id"] for r in asked))
        for number, kind, words in ((1001, "crashed", "signal 6, Aborted"), (1002, "crashed", "status 7"),
                                    (1003, "timeout", "longer than 4 s"), (1004, "memory", ""),
                                    (1005, "memory", "larger than 700 MB"), (1007, "request", "")):
            with self.subTest(number):
                error = answers[number]["error"]
                self.assertEqual(error["kind"], kind)
                self.assertIn(words, error["message"])
                self.assertTrue(error["remedy"])
        self.assertIn("values", answers[1006])
        for number, answer in plain(good).items():
            self.assertEqual(answers[number], answer)
        forked = [int(file.read_text()) for file in self.folder.iterdir() if file.name.isdigit()]
        self.assertTrue(forked)
        self.until(lambda: not any(map(is_alive, forked)), "what a worker had forked lives on")

    def test_killed_while_it_works(self):
        asked = [request(1, f"hang once {self.folder / 'it'}"), request(2)]
        process = self.start("--jobs", "1")
        process.stdin.write(lines(asked))
        process.stdin.flush()
        os.kill(self.hung_worker(self.folder / "it"), signal.SIGKILL)
        text, _ = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(answers_by_id(self, text), plain(asked))

    def test_reader_that_takes_its_time(self):
        self.stop_over_answers(kills=False)

    def test_killed_while_it_writes_and_while_it_waits(self):
        self.stop_over_answers(kills=True)

    def stop_over_answers(self, kills):
        asked = [request(n, levels=3, mesh="finest", fields=True) for n in range(3)]
        begin = time.monotonic()
        right = plain(asked)
        limit = max(2, 1.5 * (time.monotonic() - begin))  # more than one of them takes, on a busy machine too
        process = self.start("--jobs", "2", "--timeout", str(limit))
        process.stdin.write(lines(asked))
        process.stdin.flush()
        # Nobody reads: the supervisor stands over the first answer, one worker over the second; the other one waits.
        def all_sleep():
            time.sleep(0.1)
            states = [pathlib.Path(f"/proc/{n}/stat").read_text().rsplit(")", 1)[1].split() for n in workers_of(process)]
            return all(state[0] == "S" and int(state[11]) > 2 for state in states)
        self.until(lambda: all(all_sleep() for _ in range(3)), "the workers do not stop")
        if kills:
            for worker in workers_of(process):
                os.kill(worker, signal.SIGKILL)
        else:
            time.sleep(limit)  # which is the reader's time, not that of the section that is being written
        text, _ = process.communicate(timeout=PATIENCE)
        self.assertGreater(len(text), 3 << 17)  # an answer does not fit into a pipe
        self.assertEqual(answers_by_id(self, text), right)

    def test_all_killed_while_they_wait(self):
        for number in range(8):  # what ends them takes its time
            process = self.start("--jobs", "2")
            for text in (lines([request(1)]), lines([request(number)])):
                process.stdin.write(text)
                process.stdin.flush()
                answer = json.loads(process.stdout.readline())
                for worker in workers_of(process):
                    os.kill(worker, signal.SIGKILL)
            self.assertIn("values", answer)

    def test_nothing_is_left_of_a_killed_supervisor(self):
        process = self.start("--jobs", "3")
        process.stdin.write(lines([request(1, f"hang once {self.folder / 'it'}")]))
        process.stdin.flush()
        workers = [self.hung_worker(self.folder / "it"), *workers_of(process)]
        self.assertEqual(len(set(workers)), 3)
        process.kill()
        self.until(lambda: not any(map(is_alive, workers)), "workers live on")

    def test_interrupt_ends_all_behind_whole_lines(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                file = self.folder / str(int(number))
                process = self.start("--jobs", "2")
                process.stdin.write(lines([request(1, f"hang once {file}"), *map(request, range(2, 9))]))
                process.stdin.flush()
                self.hung_worker(file)
                first = process.stdout.readline()
                workers = workers_of(process)
                os.killpg(process.pid, number)  # as a terminal does
                text, complaint = process.communicate(timeout=PATIENCE)
                self.assertEqual((process.returncode, complaint), (-number, ""))
                self.assertNotIn(1, answers_by_id(self, first + text))
                self.assertFalse(any(map(is_alive, workers)))

    def test_reader_that_leaves_ends_it(self):
        process = self.start("--jobs", "2")
        process.stdin.write(lines([request(1, f"hang once {self.folder / 'it'}"), request(2)]))
        process.stdin.flush()
        self.assertIn('"id":2', process.stdout.readline())
        process.stdout.close()  # nothing is to be written: it is noticed all the same
        self.assertEqual(process.wait(timeout=PATIENCE), 3)
        self.assertIn("the standard output: cannot be written: Broken pipe", process.stderr.read())

    def test_input_is_read_only_while_workers_wait(self):
        process = self.start("--jobs", "1")
        process.stdin.write(lines([request(1, f"hang once {self.folder / 'it'}")]))
        process.stdin.flush()
        worker = self.hung_worker(self.folder / "it")
        os.set_blocking(process.stdin.fileno(), False)
        line, taken, last = lines([request(2)]).encode(), 0, time.monotonic()
        while time.monotonic() - last < 0.5 and taken < 1 << 22:
            try:
                taken += os.write(process.stdin.fileno(), line * 16)
                last = time.monotonic()
            except BlockingIOError:
                time.sleep(0.01)
        self.assertLess(taken, 1 << 20)
        os.kill(worker, signal.SIGKILL)
        self.assertIn('"id":1', process.stdout.readline())

    def test_worker_that_does_not_even_read(self):
        process = self.start("--jobs", "1", "--timeout", "2")
        self.until(lambda: len(workers_of(process)) == 1, "no worker")
        process.stdin.write(lines([request(1)]))
        process.stdin.flush()
        self.assertIn('"id":1', process.stdout.readline())
        os.kill(workers_of(process)[0], signal.SIGSTOP)
        text, _ = process.communicate(padded(2, 1 << 20) + lines([request(3)]), timeout=PATIENCE)
        answers = answers_by_id(self, text)
        self.assertEqual(answers[2]["error"]["kind"], "timeout")
        self.assertIn("values", answers[3])

    def test_long_lines(self):
        # The last line has no end.
        text = padded(1, 10_000_000) + " \r\n\n" + padded(2, LONGEST) + padded(3, LONGEST + 1) + padded(4, 100)[:-1]
        for options in ([], ["--jobs", "2"]):
            with self.subTest(options):
                done = subprocess.run([COMMAND, "worker", *options], input=text, capture_output=True, encoding="utf-8",
                                      timeout=PATIENCE)
                answers = answers_by_id(self, done.stdout)
                self.assertEqual((done.returncode, set(answers)), (0, {1, 2, 4, None}))
                self.assertTrue(all("values" in answers[number] for number in (1, 2, 4)))
                error = answers[None]["error"]
                self.assertEqual(error["kind"], "request")
                self.assertIn("16777217", error["message"])


if __name__ == "__main__":
    unittest.main()

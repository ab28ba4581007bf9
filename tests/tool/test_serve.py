"""velquor serve, and who could harm it: VELQUOR_COMMAND names the command, VELQUOR_FAULTY one with a mesher that crashes,
hangs and grows where a section's name says so (faulty_mesher.cpp). For longer: VELQUOR_SECONDS of mutated requests, and
VELQUOR_REQUESTS of which the memory is looked at."""
import json
import os
import pathlib
import random
import resource
import select
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

COMMAND = os.environ["VELQUOR_COMMAND"]
FAULTY = os.environ["VELQUOR_FAULTY"]
SECONDS = float(os.environ.get("VELQUOR_SECONDS", "0"))
REQUESTS = int(os.environ.get("VELQUOR_REQUESTS", "0"))
PATIENCE = 60  # seconds, where something must happen at once: machines may be busy
LARGEST_BODY = 2 << 20
POLICY = ("default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
          "base-uri 'none'; form-action 'none'; frame-ancestors 'none'")
EVERYWHERE = {"content-security-policy": POLICY, "x-content-type-options": "nosniff", "referrer-policy": "no-referrer",
              "cross-origin-resource-policy": "same-origin", "cross-origin-opener-policy": "same-origin"}
IPE = {"name": "IPE 300", "values": ["A", "It"], "loads": "none"}


def square(name="", **more):
    section = {"name": name, "materials": [{"name": "steel", "E": 210000}],
               "parts": [{"shape": "rectangle", "parameters": {"b": 10, "h": 20}}]}
    return {"section": section, "levels": 1, "values": ["A"], "loads": "none", **more}


def workers_of(process):
    tasks = pathlib.Path(f"/proc/{process.pid}/task").iterdir()
    return [int(n) for task in tasks for n in (task / "children").read_text().split()]


class Answer:
    def __init__(self, raw):
        head, _, self.body = raw.partition(b"\r\n\r\n")
        lines = head.decode("latin-1").split("\r\n")
        self.status = int(lines[0].split()[1])
        self.headers = {name.lower(): value for name, value in (line.split(": ", 1) for line in lines[1:])}

    def json(self):
        return json.loads(self.body)


def read_all(connection):
    raw = b""
    while piece := connection.recv(1 << 16):
        raw += piece
    return raw


class Serve(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
        resource.setrlimit(resource.RLIMIT_NOFILE, (most if most < 4096 else 4096, most))

    def start(self, *options, command=COMMAND, **more):
        process = subprocess.Popen([command, "serve", *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   encoding="utf-8", **more)
        def end():
            process.kill()
            process.communicate()
        self.addCleanup(end)
        self.url = process.stdout.readline().strip()
        self.assertRegex(self.url, r"^http://127\.0\.0\.1:\d+/$", "no address")
        self.host = self.url[len("http://"):-1]
        self.port = int(self.host.split(":")[1])
        return process

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return pathlib.Path(folder.name)

    def until(self, holds, what):
        end = time.monotonic() + PATIENCE
        while not holds():
            self.assertLess(time.monotonic(), end, what)
            time.sleep(0.01)

    def connect(self, raw=b"", timeout=PATIENCE):
        connection = socket.create_connection(("127.0.0.1", self.port), timeout)
        self.addCleanup(connection.close)
        connection.sendall(raw)
        return connection

    def exchange(self, raw):
        with self.connect(raw) as connection:
            return Answer(read_all(connection))

    def head(self, method="GET", target="/", **headers):
        """Of a request; None leaves a header out, a list gives it several times."""
        all_headers = {"Host": self.host, **{k.replace("_", "-"): v for k, v in headers.items()}}
        lines = [f"{k}: {v}" for k, vs in all_headers.items() if vs is not None
                 for v in (vs if isinstance(vs, list) else [vs])]
        return "\r\n".join([f"{method} {target} HTTP/1.1", *lines, "", ""]).encode("latin-1")

    def question(self, request, page="page", **headers):
        body = request if isinstance(request, bytes) else json.dumps(request).encode()
        headers = {"Content_Type": "application/json", "X_Velquor_Page": page, "Content_Length": len(body), **headers}
        return self.head("POST", "/answer", **headers) + body

    def ask(self, request, page="page", **headers):
        return self.exchange(self.question(request, page, **headers))

    def works(self):
        values = self.ask(IPE, "works").json()["values"]
        self.assertAlmostEqual(values["A"]["value"], 5381.2, places=1)


class Answers(Serve):
    def test_files_and_answers(self):
        self.start()
        page = self.exchange(self.head())
        self.assertEqual((page.status, page.headers["content-type"]), (200, "text/html; charset=utf-8"))
        self.assertEqual(page.body, (pathlib.Path(__file__).parents[2] / "page" / "index.html").read_bytes())
        self.assertEqual(page.headers["cache-control"], "no-cache")
        again = self.exchange(self.head(If_None_Match=page.headers["etag"]))
        self.assertEqual((again.status, again.body), (304, b""))
        only_head = self.exchange(self.head("HEAD"))
        self.assertEqual((only_head.headers["content-length"], only_head.body), (str(len(page.body)), b""))
        for path, command in (("/catalogue.json", "catalogue"), ("/section.schema.json", "schema")):
            printed = subprocess.run([COMMAND, command], capture_output=True, check=True).stdout
            self.assertEqual(self.exchange(self.head(target=path, Range="bytes=0-9,0-9,5-")).body, printed)

        def by_worker(request):
            line = json.dumps(request) + "\n"
            return json.loads(subprocess.run([COMMAND, "worker"], input=line.encode(), capture_output=True).stdout)
        deep = square(accuracy=0.5)
        deep["section"]["wishes"] = {"levels": deep.pop("levels") + 5}
        for asked, same_as in ((IPE, IPE), ({**IPE, "view": "draft"}, {**IPE, "view": "draft"}),
                               ({**deep, "mesh": "coarse"}, {**deep, "mesh": "coarse", "levels": 4}),
                               ({**deep, "levels": 6}, {**deep, "levels": 4}), ({**deep, "levels": 2}, {**deep, "levels": 2}), ({"name": "IPE 301"}, {"name": "IPE 301"}), ([IPE], [IPE])):
            with self.subTest(asked):
                answer = self.ask(json.dumps(asked, indent=2).encode())  # several lines are one request too
                self.assertEqual((answer.status, answer.headers["cache-control"]), (200, "no-store"))
                self.assertEqual(answer.json(), by_worker(same_as))
        by_file = square()
        by_file["section"] = {"materials": by_file["section"]["materials"], "mesh": {"file": "/etc/passwd"}}
        self.assertIn("no files are read here", self.ask(by_file).json()["error"]["message"])
        for body in (b"", b"{", b'{"name": 1, "name": 2}', b"[" * 100000, b'{"name": "\xff"}', b"\0", b"1 2"):
            answer = self.ask(body)
            self.assertEqual((answer.status, answer.json()["error"]["kind"]), (400, "request"), body[:20])

    def test_who_and_what_is_refused(self):
        self.start()
        port = self.port
        good = {"Content_Type": "application/json", "X_Velquor_Page": "a", "Content_Length": 2}
        def post(target="/answer", **changed):
            return self.head("POST", target, **{**good, **changed}) + b"{}"
        cases = [
            (self.head(Host=f"localhost:{port}"), 200),
            *((self.head(Host=host), 403) for host in
              (None, "", "evil.example", f"evil.example:{port}", "127.0.0.1", f"127.0.0.1:{port + 1}", f"127.0.0.2:{port}",
               f"localhost:{port}.evil.example", f"[::1]:{port}", [self.host, "evil.example"], ["evil.example", self.host])),
            (post(Origin=f"http://{self.host}"), 200),
            *((post(Origin=origin), 403) for origin in
              ("null", "http://evil.example", f"https://{self.host}", f"http://127.0.0.1:{port + 1}", f"http://localhost:{port}",
               [f"http://{self.host}", "http://evil.example"])),
            (post(Sec_Fetch_Site="same-origin"), 200), (post(Sec_Fetch_Site="cross-site"), 403),
            (post(Sec_Fetch_Site="same-site"), 403), (self.head(Sec_Fetch_Site="none"), 200),
            (self.head(Sec_Fetch_Site="cross-site"), 403),
            (self.head(Sec_Fetch_Site="cross-site", Sec_Fetch_Mode="navigate", Sec_Fetch_Dest="document"), 200),
            (self.head(Sec_Fetch_Site="cross-site", Sec_Fetch_Mode="navigate", Sec_Fetch_Dest="iframe"), 403),
            (post(Sec_Fetch_Site="cross-site", Sec_Fetch_Mode="navigate", Sec_Fetch_Dest="document"), 403),
            (post(Content_Type=None), 415), (post(Content_Type="text/plain"), 415),
            (post(Content_Type="application/x-www-form-urlencoded"), 415), (post(Content_Encoding="gzip"), 415),
            (post(Content_Type="multipart/form-data; boundary=a"), 415),
            (post(Content_Type="Application/JSON; charset=utf-8"), 200),
            (post(X_Velquor_Page=None), 400), (post(X_Velquor_Page="a" * 101), 400), (post(X_Velquor_Page="a b"), 400),
            (post(Content_Length=None), 411), (post(Content_Length=["2", "2"]), 411), (post(Content_Length="-1"), 411),
            (post(Content_Length="2x"), 411), (post(Content_Length=None, Transfer_Encoding="chunked"), 411),
            (post(Transfer_Encoding="chunked"), 411),
            (post(Content_Length=LARGEST_BODY + 1), 413), (post(Content_Length="9" * 17), 413),
            *((self.head(method), 405) for method in ("POST", "PUT", "DELETE", "OPTIONS", "PATCH", "CONNECT", "TRACE")),
            *((self.head(method, "/answer"), 405) for method in ("GET", "HEAD", "PUT", "OPTIONS")),
            (post("/"), 405), (post("/answer/"), 404), (post("/other"), 404),
            *((self.head(target=path), 404) for path in
              ("/etc/passwd", "//etc/passwd", "/../../../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/..%2f..%2fetc%2fpasswd",
               "/index.html%00", "/%00", "/index.html/", "/INDEX.HTML", "/page.cpp", "/CMakeLists.txt", "/%ff%fe", "etc/passwd",
               f"http://{self.host}/etc/passwd", "/" + "a" * 8000)),
            (self.head(target="/" + "a" * 9000), 414), (self.head(Cookie="a" * 9000), 400),
            (self.head(**{f"h{n}": "a" * 1000 for n in range(20)}), 400), (self.head(**{f"h{n}": n for n in range(200)}), 400),
            (self.head(Range="bytes=" + "0-0," * 2000), 200),
            *((self.head(**{name: "0" * 8100 + "-"}), 200) for name in ("Range", "rANGE")),
            (self.head().replace(b"\r\n\r\n", b"\r\na\nRange: " + b"0" * 8100 + b"\r\n\r\n"), 200), (b"GARBAGE\r\n\r\n", 400), (b"GET\0 / HTTP/1.1\r\n\r\n", 400),
            (b"\r\n\r\n", 400), (b"GET / HTTP/9.9\r\n\r\n", 400), (b"GET / HTTP/1.0\r\n\r\n", 403),
        ]
        for raw, status in cases:
            with self.subTest(raw[:200]):
                answer = self.exchange(raw)
                self.assertEqual(answer.status, status)
                self.assertEqual({k: answer.headers.get(k) for k in EVERYWHERE}, EVERYWHERE)
                self.assertNotIn("access-control-allow-origin", answer.headers)
                if status != 200 and not raw.startswith(b"HEAD"):
                    self.assertEqual(set(answer.json()["error"]), {"kind", "message"})
        # As large as may be.
        body = b" " * (LARGEST_BODY - 2) + b"{}"
        self.assertIn("no section", self.ask(body).json()["error"]["message"])
        self.works()

    def test_mutated_requests(self):
        process = self.start("--timeout", "2")
        chance = random.Random(7)
        whole = [self.head(), self.head(target="/catalogue.json"), self.question(IPE), self.question(square(view="draft")),
                 self.question({"shape": "i", "parameters": {"h": 300, "b": 150, "tw": 7, "tf": 10}, "fields": ["T"]}),
                 self.question(square(document={"form": "svg", "fields": ["outline"]}))]
        pieces = [b"\r\n", b"\0", b"%", b"..", b"-1", b"1e999", b"9" * 30, b"\xff\xfe", b"{", b"[" * 50, b'"', b": ", b",,",
                  b"Content-Length: 5\r\n", b"Transfer-Encoding: chunked\r\n", b"Expect: 100-continue\r\n", b"A" * 5000,
                  b"Range: bytes=9-0\r\n", b"Content-Encoding: br\r\n", b"GET ", b"null", b"true", b"0", b"-0.0", b"1e-300"]
        def mutated():
            raw = bytearray(chance.choice(whole))
            for _ in range(chance.choice((0, 1, 1, 2, 5))):
                # Rather in the body, where there is one.
                at = chance.randrange(len(raw)) if chance.random() < 0.5 else chance.randrange(len(raw) * 2 // 3, len(raw))
                change = chance.randrange(5)
                if change == 0:
                    raw[at] = chance.randrange(256)
                elif change == 1:
                    raw[at:at] = chance.choice(pieces)
                elif change == 2:
                    raw[at:at + chance.randrange(1, 40)] = b""
                elif change == 3:
                    raw[at:at + chance.randrange(1, 10)] = chance.choice(pieces)
                else:
                    other = chance.choice(whole)
                    raw[at:] = other[chance.randrange(len(other)):]
                raw = raw or bytearray(b"\n")
            return bytes(raw)
        end, count, told = time.monotonic() + SECONDS, 0, {}
        while count < 300 or time.monotonic() < end:
            connection = self.connect(mutated())
            if chance.random() < 0.9:
                if chance.random() < 0.2:
                    connection.shutdown(socket.SHUT_WR)
                try:
                    connection.settimeout(chance.choice((0.02, 0.1, 0.1)) if count % 100 else PATIENCE)
                    raw = read_all(connection)
                    status = Answer(raw).status if raw else "closed"
                except TimeoutError:
                    status = "left"
                except ConnectionError:
                    status = "broken off"
                told[status] = told.get(status, 0) + 1
            connection.close()
            self._cleanups.pop()
            count += 1
        if SECONDS:
            print(f"{count} mutated requests: {told}")
        self.assertIsNone(process.poll())
        self.assertNotIn(500, told)
        self.works()


class Crowds(Serve):
    def test_a_thousand_side_by_side(self):
        self.start()
        for same in (False, True):
            with self.subTest(same_page=same):
                connections = [self.connect() for _ in range(1000)]
                for n, connection in enumerate(connections):
                    connection.sendall(self.question(square(), "same" if same else f"page{n}"))
                told = {}
                for connection in connections:
                    answer = Answer(read_all(connection))
                    connection.close()
                    told[answer.status] = told.get(answer.status, 0) + 1
                    if answer.status == 200:
                        self.assertAlmostEqual(answer.json()["values"]["A"]["value"], 200, places=6)
                    elif answer.status == 503:
                        self.assertEqual((answer.json()["error"]["kind"], answer.headers["retry-after"]), ("busy", "1"))
                self.assertLessEqual(set(told), {200, 409} if same else {200, 503}, told)
                self.assertGreaterEqual(told[200], 1 if same else 64, told)
        self.works()

    def test_large_bodies_at_a_time(self):
        self.start()
        head = self.question(IPE, Content_Length=1 << 20)
        slow = [self.connect(head) for _ in range(32)]
        time.sleep(1)
        large = self.ask({**IPE, "document": {"form": "section", "by": "a" * 100000}})
        self.assertEqual((large.status, large.json()["error"]["kind"]), (503, "busy"))
        self.works()
        self.assertEqual([Answer(read_all(c)).status for c in slow], [408] * 32)
        self.assertEqual(self.ask(b" " * LARGEST_BODY).status, 400)

    def test_slow_clients_keep_nobody_waiting_and_are_cut_off(self):
        self.start("--jobs", "1", "--timeout", "60", "--memory", "4096")
        asked = self.question({**IPE, "mesh": "finest", "fields": True, "levels": 4})
        reader = socket.socket()
        self.addCleanup(reader.close)
        reader.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        reader.connect(("127.0.0.1", self.port))
        reader.sendall(asked)
        self.assertTrue(select.select([reader], [], [], PATIENCE)[0])  # it could read, and does not
        beginnings = [b"", b"GET", self.head()[:-2], asked[:-5]] * 250
        slow = [self.connect(raw) for raw in beginnings]
        begin = time.monotonic()
        for _ in range(10):
            self.assertEqual(self.exchange(self.head()).status, 200)
        still_open = [c for c in slow if not select.select([c], [], [], 0)[0]]
        self.assertLess(time.monotonic() - begin, 4)
        self.assertEqual(len(still_open), 1000)  # these were kept waiting, not the others
        stop = threading.Event()
        def drip():  # a byte now and then does not help
            while not stop.wait(0.5):
                for connection in slow[1::4]:
                    try:
                        connection.send(b"G")
                    except OSError:
                        pass
        dripping = threading.Thread(target=drip)
        dripping.start()
        try:
            for connection, raw in zip(slow, beginnings):
                try:
                    told = read_all(connection)
                except ConnectionResetError:
                    continue
                if raw == asked[:-5]:
                    self.assertEqual(Answer(told).status, 408)
        finally:
            stop.set()
            dripping.join()
        self.assertLess(time.monotonic() - begin, 20)
        self.until(lambda: time.monotonic() - begin > 11, "")
        size = 0
        try:
            size = len(read_all(reader))
        except ConnectionResetError:
            pass
        whole = len(read_all(self.connect(asked)))
        self.assertLess(size, whole)
        self.works()


    @unittest.skipUnless(REQUESTS, "takes minutes")
    def test_memory_stays_flat(self):
        process = self.start()
        def resident(number):
            return int(pathlib.Path(f"/proc/{number}/statm").read_text().split()[1]) * resource.getpagesize() / 1e6
        sizes, wrong = [], []
        def some(thread, count):
            for n in range(count):
                kind = n % 10
                answer = (self.exchange(self.head(target="/catalogue.json")) if kind == 0 else
                          self.exchange(self.head(Host="evil.example")) if kind == 1 else
                          self.ask(b"{", f"t{thread}") if kind == 2 else
                          self.ask(square("", size=[0, 3][n % 2], view="draft"), f"t{thread}") if kind == 3 else
                          self.ask(square(), f"t{thread}"))
                if answer.status != {1: 403, 2: 400}.get(kind, 200):
                    wrong.append(answer.status)
                self._cleanups.clear()
        for tenth in range(10):
            threads = [threading.Thread(target=some, args=(n, REQUESTS // 80)) for n in range(8)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
            self.assertEqual(wrong, [])
            sizes.append([resident(process.pid), max(map(resident, workers_of(process))),
                          len(os.listdir(f"/proc/{process.pid}/fd"))])
            print(f"{(tenth + 1) * REQUESTS // 10} requests: server {sizes[-1][0]:.1f} MB, largest worker {sizes[-1][1]:.1f} MB, "
                  f"{sizes[-1][2]} descriptors", flush=True)
        process.kill()
        process.communicate()
        for k in range(3):
            self.assertLess(sizes[-1][k], 1.2 * sizes[1][k] + 2)


class Workers(Serve):
    def start(self, *options, **more):
        return super().start(*options, command=FAULTY, **more)

    def test_a_newer_request_ends_an_older_one(self):
        process = self.start("--jobs", "1", "--timeout", "600")
        hung, = workers_of(process)
        older = self.connect(self.question(square("hang"), "page-view"))
        time.sleep(0.5)
        waiting = self.connect(self.question(square("hang"), "other"))
        also = self.connect(self.question(square(), "page-export"))
        newer = self.connect(self.question(square(), "page-view"))
        answer = Answer(read_all(older))
        self.assertEqual((answer.status, answer.json()["error"]["kind"]), (409, "cancelled"))
        time.sleep(0.5)
        self.assertEqual(Answer(read_all(self.connect(self.question(square("a"), "other")))).status, 200)
        self.assertEqual(Answer(read_all(waiting)).status, 409)
        self.assertEqual([Answer(read_all(c)).status for c in (also, newer)], [200, 200])
        self.assertNotEqual(workers_of(process), [hung])

    def test_as_many_wait_as_told(self):
        self.start("--jobs", "1", "--timeout", "600")
        connections = [self.connect(self.question(square("hang"), str(n))) for n in range(100)]
        refused = []
        self.until(lambda: refused.extend(select.select([c for c in connections if c not in refused], [], [], 0)[0]) or
                   len(refused) >= 35, "too many wait")
        time.sleep(0.3)
        self.assertEqual(len(select.select(connections, [], [], 0)[0]), 35)
        for connection in refused:
            answer = Answer(read_all(connection))
            self.assertEqual((answer.status, answer.headers["retry-after"]), (503, "1"))
            self.assertIn("64 requests wait", answer.json()["error"]["message"])

    def test_a_client_that_leaves_is_forgotten(self):
        process = self.start("--jobs", "1", "--timeout", "600")
        for end in (socket.socket.close, lambda connection: connection.shutdown(socket.SHUT_RDWR)):
            hung = workers_of(process)
            connection = self.connect(self.question(square("hang")))
            time.sleep(0.5)
            end(connection)
            self.works()
            self.assertNotEqual(workers_of(process), hung)

    def test_short_requests_are_not_worth_a_worker(self):
        process = self.start("--jobs", "1")
        told, seen = [], set()
        for connection in [self.connect(self.question(square())) for _ in range(50)]:
            told.append(Answer(read_all(connection)).status)
            seen.update(workers_of(process))
        self.assertEqual(set(told), {200, 409})
        self.assertLess(len(seen), 5)

    def test_faults_of_workers(self):
        folder = self.folder()
        for name, kind in (("hang", "timeout"), ("crash", "crashed"), ("exit", "crashed"), ("grow", "memory"),
                           ("grow shared", "memory")):
            process = self.start("--timeout", "1" if name == "hang" else "60", "--memory", "400")
            with self.subTest(name):
                answer = self.ask(square(name))
                self.assertEqual((answer.status, answer.json()["error"]["kind"]), (200, kind))
        connection = self.connect(self.question(square(f"hang once {folder / 'it'}")))
        self.until((folder / "it").exists, "nothing hangs")
        os.kill(int((folder / "it").read_text()), signal.SIGKILL)
        self.assertAlmostEqual(Answer(read_all(connection)).json()["values"]["A"]["value"], 200, places=6)
        for worker in workers_of(process):
            os.kill(worker, signal.SIGKILL)
        self.works()

    @unittest.skipIf(b"__asan_init" in pathlib.Path(FAULTY).read_bytes(), "sanitizers need descriptors of their own")
    def test_no_worker_to_be_had_for_a_while(self):
        process = self.start("--jobs", "1")
        worker, = workers_of(process)
        limits = resource.prlimit(process.pid, resource.RLIMIT_NOFILE)
        few = len(os.listdir(f"/proc/{process.pid}/fd")) + 4  # for a connection, not for the three pipes of a worker
        resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (few, limits[1]))
        self.works()
        os.kill(worker, signal.SIGKILL)
        for _ in range(2):
            answer = self.ask(IPE)
            self.assertEqual((answer.status, answer.json()["error"]["kind"]), (503, "busy"))
        resource.prlimit(process.pid, resource.RLIMIT_NOFILE, limits)
        self.works()

    def test_signals_end_it_in_order(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                process = self.start("--jobs", "2")
                connections = [self.connect(self.question(square("hang"), str(n))) for n in range(5)]
                self.connect(b"GET")
                time.sleep(0.3)
                workers = workers_of(process)
                self.assertEqual(len(workers), 2)
                process.send_signal(number)
                self.assertEqual([Answer(read_all(c)).status for c in connections], [503] * 5)
                self.assertEqual(process.communicate(timeout=PATIENCE), ("", ""))
                self.assertEqual(process.returncode, 0)
                self.assertFalse(any(pathlib.Path(f"/proc/{n}/cmdline").exists() for n in workers))


class Starts(Serve):
    def listeners(self):
        lines = [line.split() for file in ("tcp", "tcp6") for line in pathlib.Path(f"/proc/net/{file}").read_text().splitlines()]
        return [l[1].split(":")[0] for l in lines if l[3] == "0A" and l[1].endswith(f":{self.port:04X}")]

    def test_where_it_listens(self):
        self.start()
        self.assertEqual(self.listeners(), ["0100007F"])
        done = subprocess.run([COMMAND, "serve", "--port", str(self.port)], capture_output=True, encoding="utf-8")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, f"velquor: --port: {self.port} is taken; leave it out for a free one, or name another\n")
        for address in ("192.0.2.1", "no.such.host.invalid"):
            done = subprocess.run([COMMAND, "serve", "--listen", address], capture_output=True, encoding="utf-8")
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertIn(f'velquor: --listen: "{address}" is no address of this machine', done.stderr)
        process = self.start("--listen", "0.0.0.0")
        self.assertEqual(self.listeners(), ["00000000"])
        self.assertEqual(self.exchange(self.head()).status, 200)
        self.assertEqual(self.exchange(self.head(Host=f"evil.example:{self.port}")).status, 403)
        process.terminate()
        self.assertIn("whoever reaches it may use it, without a password", process.communicate()[1])

    def test_the_browser(self):
        folder = self.folder()
        for script, complains in (("printf '%s' \"$*\" >it; mv it told", False), ("exit 3", True), (None, True)):
            with self.subTest(script):
                if script:
                    (folder / "xdg-open").write_text(f"#!/bin/sh\n{script}\n")
                    (folder / "xdg-open").chmod(0o755)
                else:
                    (folder / "xdg-open").unlink()
                process = self.start("--open", cwd=folder, env={**os.environ, "PATH": f"{folder}:/nowhere" if complains else
                                                               f"{folder}:{os.environ['PATH']}"})
                if complains:
                    self.assertIn("no browser could be started; open http://127.0.0.1:", process.stderr.readline())
                else:
                    self.until((folder / "told").exists, "no browser")
                    self.assertEqual((folder / "told").read_text(), self.url)
                self.works()


if __name__ == "__main__":
    unittest.main()

"""One pool of workers for the process, `velquor worker --jobs N`, which replaces those that end over a section.

A thread of the pool writes lines and reads answers; any thread may give requests, each with an inbox of its own for
the answers. A supervisor that ends is started anew, and what it had is given to it once more. A fork leaves the child
without pools, whose own start when it needs them; at exit all are ended.
"""
import atexit
import collections
import contextlib
import itertools
import json
import os
import queue
import selectors
import signal
import subprocess
import tempfile
import threading
from typing import Any, Dict, Iterator, List, Mapping, NamedTuple, Optional, Tuple, Union

from .places import find_command
from .requests import text_of
from .results import SectionError

FEW = 4  # processes where no number is given and one answer is wanted

Answer = Union[Dict[str, Any], Exception]


class Settings(NamedTuple):
    command: str          # "": that which is found
    jobs: int             # processes; 0: as many as processors that this one may use
    timeout: float        # seconds for a section
    memory: float         # MB
    files: Optional[str]  # folder of files that sections name; None: none may be read


class _Job:
    __slots__ = ("line", "inbox", "tag", "goes")

    def __init__(self, line: bytes, inbox: "queue.SimpleQueue[Tuple[Any, Answer]]", tag: Any):
        self.line, self.inbox, self.tag, self.goes = line, inbox, tag, 0


class _Pool:
    def __init__(self, settings: Settings):
        self.settings = settings
        self.users = 0  # streams that hold it; guarded by _guard
        self.closed = False
        self._most = 2 * settings.jobs  # lines that the supervisor has at a time: those that wait here can be dropped
        self._lock = threading.RLock()  # guards what follows; again where the collector ends a stream meanwhile
        self._tickets = itertools.count(1)
        self._jobs: Dict[int, _Job] = {}  # not answered yet
        self._queue: "collections.deque[int]" = collections.deque()  # not handed over yet
        self._sent: List[int] = []  # handed over, dropped ones among them
        self._process: Any = None  # subprocess.Popen
        self._wake: Tuple[int, ...] = os.pipe()  # () at the end
        for end in self._wake:
            os.set_blocking(end, False)
        self._thread = threading.Thread(target=self._run, name="velquor workers", daemon=True)
        self._thread.start()

    def give(self, request: Mapping[str, Any], inbox: "queue.SimpleQueue[Tuple[Any, Answer]]", tag: Any) -> int:
        """Its answer comes to the inbox, with the tag. Throws SectionError where it is no request."""
        ticket = next(self._tickets)
        job = _Job(text_of({**request, "id": ticket}).encode() + b"\n", inbox, tag)
        with self._lock:
            self._jobs[ticket] = job
            self._queue.append(ticket)
            self._rouse()
        return ticket

    def drop(self, tickets: "set[int]") -> None:
        """Answers to these are not wanted any more."""
        with self._lock:
            for ticket in tickets:
                self._jobs.pop(ticket, None)

    def close(self) -> None:
        self.closed = True
        self._rouse()
        if threading.current_thread() is not self._thread:
            self._thread.join(10)

    def forget(self) -> None:
        """In a child process, to which workers and thread do not belong: its copies of the descriptors are closed."""
        self.closed = True
        self._lock = threading.RLock()  # which another thread of the parent may have held
        process, self._process = self._process, None
        for end in self._wake:
            os.close(end)
        if process:
            process.stdin.close()
            process.stdout.close()
            self._messages.close()
            process.returncode = 0  # of no child of ours: nothing to wait for

    def _rouse(self) -> None:
        with self._lock, contextlib.suppress(BlockingIOError):  # full: it is awake
            if self._wake:
                os.write(self._wake[1], b"\0")

    def _run(self) -> None:
        while not self.closed:
            with contextlib.suppress(BlockingIOError):
                os.read(self._wake[0], 4096)
            if not self._jobs:
                with selectors.PollSelector() as selector:
                    selector.register(self._wake[0], selectors.EVENT_READ)
                    selector.select()
                continue
            try:
                self._supervise()
            except Exception as error:  # whatever it is: nobody is left waiting
                self._fail(OSError(f"velquor: {self.settings.command} worker gives no answers: {error}"))
        with self._lock:
            for end in self._wake:
                os.close(end)
            self._wake = ()

    def _supervise(self) -> None:
        """From the start of a supervisor to its end."""
        with tempfile.TemporaryFile(buffering=0) as self._messages:
            self._process = self._start()
            try:
                has_answered = self._serve(self._process)
            finally:
                status = self._end(self._process)
                self._process = None
            self._messages.seek(max(0, self._messages.seek(0, os.SEEK_END) - 2000))
            told = self._messages.read().decode("utf-8", "replace").strip()
        if status >= 0 and not has_answered and not self.closed:
            known = told.startswith("velquor: --")  # what is wrong with an option
            raise OSError(f"it ended with status {status}" + (f": {told}" if told else "")
                          + ("" if known else "; is it velquor, of this package's version?"))
        self._give_again()

    def _start(self) -> Any:
        s = self.settings
        files = [] if s.files is None else ["--files", s.files]
        process: Any = subprocess.Popen(
            [s.command, "worker", "--jobs", str(s.jobs), "--timeout", f"{s.timeout:.15g}", "--memory", f"{s.memory:.15g}",
             *files], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._messages, bufsize=0,
            start_new_session=True)  # Ctrl-C is for this process alone
        for stream in process.stdin, process.stdout:
            os.set_blocking(stream.fileno(), False)
        return process

    def _serve(self, process: Any) -> bool:
        """Writes and reads until the supervisor ends or the pool is closed. Returns whether it has answered at all."""
        out, answered = bytearray(), False
        begun: List[bytes] = []  # of a line
        nameless: List[Dict[str, Any]] = []
        with selectors.PollSelector() as selector:
            selector.register(self._wake[0], selectors.EVENT_READ)
            selector.register(process.stdout, selectors.EVENT_READ)
            writing = False
            while not self.closed:
                if not nameless:
                    out += self._next_lines()
                if bool(out) != writing:
                    writing = not writing
                    if writing:
                        selector.register(process.stdin, selectors.EVENT_WRITE)
                    else:
                        selector.unregister(process.stdin)
                for key, _ in selector.select():
                    if key.fd == self._wake[0]:
                        os.read(key.fd, 4096)
                    elif key.fileobj is process.stdin:
                        try:
                            del out[:os.write(key.fd, out[:1 << 16])]
                        except BrokenPipeError:
                            return answered
                    else:
                        block = os.read(key.fd, 1 << 20)
                        if not block:
                            return answered
                        begun.append(block)
                        if b"\n" in block:
                            *lines, rest = b"".join(begun).split(b"\n")
                            begun = [rest]
                            answered = True
                            for line in lines:
                                self._take(json.loads(line), nameless)
        return answered

    def _next_lines(self) -> bytes:
        lines = []
        with self._lock:
            while self._queue and len(self._sent) < self._most:
                ticket = self._queue.popleft()
                job = self._jobs.get(ticket)
                if job:
                    lines.append(job.line)
                    self._sent.append(ticket)
        return b"".join(lines)

    def _take(self, answer: Dict[str, Any], nameless: List[Dict[str, Any]]) -> None:
        """An answer; one without id, to a line that could not be read, is that of the request which is left over."""
        ticket = answer.get("id")
        with self._lock:
            if ticket is None:
                nameless.append(answer)
            elif ticket in self._sent:
                self._sent.remove(ticket)
                self._tell(ticket, answer)
            if nameless and len(nameless) == len(self._sent):
                for ticket in self._sent:
                    self._tell(ticket, nameless.pop(0))
                self._sent = []

    def _tell(self, ticket: int, answer: Answer) -> None:
        job = self._jobs.pop(ticket, None)
        if job:
            job.inbox.put((job.tag, answer))

    def _give_again(self) -> None:
        with self._lock:
            sent, self._sent = self._sent, []
            for ticket in reversed(sent):
                job = self._jobs.get(ticket)
                if not job:
                    continue
                job.goes += 1
                if job.goes < 2:
                    self._queue.appendleft(ticket)
                else:
                    self._tell(ticket, {"error": {"kind": "crashed", "at": "", "message": "the workers ended twice over it",
                                                  "remedy": ""}})

    def _fail(self, error: Exception) -> None:
        with self._lock:
            for ticket in list(self._jobs):
                self._tell(ticket, error)
            self._queue.clear()
            self._sent = []

    def _end(self, process: Any) -> int:
        """Ends the supervisor, which has a process group of its own, and all that is left of the group."""
        process.stdin.close()
        process.stdout.close()
        if not (self.closed and self._sent):
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(2)
        with contextlib.suppress(OSError):  # none is left
            os.killpg(process.pid, signal.SIGKILL)
        return process.wait()


_guard = threading.RLock()  # guards what follows, and the users of pools; again as a pool's own
_pools: Dict[Settings, _Pool] = {}
_ending: List[_Pool] = []


def _acquire(settings: Settings, any_jobs: bool) -> _Pool:
    with _guard:
        pool = next((pool for held, pool in _pools.items()
                     if held == settings or any_jobs and held._replace(jobs=settings.jobs) == settings), None)
        unused = [] if pool else [held for held, other in _pools.items() if other.users == 0]
        _ending.extend(_pools.pop(held) for held in unused)
        if not pool:
            pool = _pools[settings] = _Pool(settings)
        pool.users += 1
        ending = _ending[:]
    for other in ending:
        other.close()
        with _guard, contextlib.suppress(ValueError):
            _ending.remove(other)
    return pool


def stream(settings: Settings, requests: Iterator[Tuple[Any, Union[Mapping[str, Any], SectionError]]],
           any_jobs: bool = False) -> Iterator[Tuple[Any, Answer]]:
    """The answers to tagged requests as they come, each with its tag; an error in the place of a request is its own.

    Requests are read as workers have need of them. Tags are unlike. `any_jobs`: a pool that is there will do, whatever its
    size. Throws OSError where there are no workers.
    """
    process, processors = os.getpid(), len(os.sched_getaffinity(0))
    settings = settings._replace(command=find_command(settings.command),
                                 jobs=settings.jobs or (min(FEW, processors) if any_jobs else processors))
    pool = _acquire(settings, any_jobs)
    try:
        inbox: "queue.SimpleQueue[Tuple[Any, Answer]]" = queue.SimpleQueue()
        most, is_more = 4 * pool.settings.jobs + 4, True
        given: Dict[Any, int] = {}
        while is_more or given:
            while is_more and len(given) < most:
                tag, request = next(requests, (None, None))
                if request is None:
                    is_more = False
                    break
                try:
                    if isinstance(request, SectionError):
                        raise request
                    given[tag] = pool.give(request, inbox, tag)
                except SectionError as error:
                    yield tag, error
                    if os.getpid() != process:
                        raise RuntimeError("a batch goes on in the process that began it") from None
                if not inbox.empty():
                    break
            if given:
                tag, answer = inbox.get()
                del given[tag]
                if isinstance(answer, Exception):
                    raise answer
                yield tag, answer
                if os.getpid() != process:
                    raise RuntimeError("a batch goes on in the process that began it")
    finally:
        if os.getpid() == process:
            pool.drop(set(given.values()))
            with _guard:
                pool.users -= 1


@atexit.register
def _close_all() -> None:
    with _guard:
        pools = [*_pools.values(), *_ending]
        _pools.clear()
        _ending.clear()
    for pool in pools:
        pool.close()


def _forget_all() -> None:
    global _guard
    pools = [*_pools.values(), *_ending]
    _guard = threading.RLock()
    _pools.clear()
    _ending.clear()
    for pool in pools:
        pool.forget()


os.register_at_fork(after_in_child=_forget_all)

"""Sections by the workers of a Dask cluster: chunks of requests become tasks, which Dask schedules, repeats and moves."""
import contextlib
import itertools
from typing import Any, Dict, Iterator, List, Mapping, Tuple, Union

from . import workers
from .requests import text_of
from .results import SectionError


def stream(client: Any, size: int, retries: int, settings: workers.Settings,
           requests: Iterator[Tuple[int, Union[Mapping[str, Any], SectionError]]]) -> Iterator[Tuple[int, workers.Answer]]:
    """As workers.stream, `size` requests in a task. Every task has a key of its own: none is taken for another's."""
    from distributed import CancelledError, Client, KilledWorker, as_completed  # whoever has a client has it
    from distributed.comm import CommClosedError

    if not isinstance(client, Client) or client.asynchronous:
        raise TypeError(f"client: a dask.distributed.Client that is not asynchronous expected, not {client!r}")
    under_way: Dict[Any, List[Tuple[int, Any]]] = {}
    completed, is_more = as_completed(loop=client.loop), True
    try:
        while is_more or under_way:
            if client.status != "running":
                raise CancelledError(f"it is {client.status}")
            # Two tasks for each thread: none waits while results travel, and little is lost with the client.
            most = 2 * max(2, sum(client.nthreads().values())) if is_more else 0
            while is_more and len(under_way) < most:
                block = list(itertools.islice(requests, size))
                is_more = len(block) == size
                good = []
                for index, request in block:
                    try:
                        if isinstance(request, SectionError):
                            raise request
                        text_of(request)  # what is no request need not travel
                        good.append((index, request))
                    except SectionError as error:
                        yield index, error
                if good:
                    future = client.submit(answers_of, settings, good, retries=retries, pure=False)
                    under_way[future] = good
                    completed.add(future)
            if under_way:
                future = next(completed)
                block = under_way.pop(future)
                try:
                    yield from future.result()
                except KilledWorker as error:
                    failure = {"kind": "crashed", "at": "", "message": "the cluster's workers died over the task of this "
                               f"section and {len(block) - 1} others: {error}",
                               "remedy": "Dask's distributed.scheduler.allowed-failures allows more"}
                    yield from ((index, {"error": failure}) for index, _ in block)
    except (CancelledError, CommClosedError) as error:
        raise ConnectionError(f"client: it was closed, or has lost its scheduler or tasks ({error}); results that came are "
                              "whole, the other sections are for another batch") from error
    finally:
        if under_way and client.status == "running":
            with contextlib.suppress(OSError):  # the scheduler is gone
                client.cancel(list(under_way))


def answers_of(settings: workers.Settings,
               requests: List[Tuple[int, Mapping[str, Any]]]) -> List[Tuple[int, workers.Answer]]:
    """A task: the answers of this process's pool, which has a worker for each thread of the Dask worker."""
    from distributed import get_worker

    settings = settings._replace(jobs=settings.jobs or get_worker().state.nthreads)
    return list(workers.stream(settings, iter(requests)))

"""SIGINT and SIGTERM end a run by the exception Interrupted: at once where the system is waited for,
but not while Popen starts a child, which would be left, or polls one: it would keep its lock then,
and never end to wait for it."""

from __future__ import annotations

import signal
from collections.abc import Iterator
from contextlib import contextmanager
from types import FrameType

_SIGNALS = (signal.SIGINT, signal.SIGTERM)
_came = 0  # the signal's number
_held = False


class Interrupted(Exception):
    """Somebody wants the run to end: a signal came."""

    def __init__(self, number: int) -> None:
        super().__init__(f"interrupted by signal {number}")
        self.code = 128 + number


def raise_from_now_on() -> None:
    for name in _SIGNALS:
        if signal.getsignal(name) is not signal.SIG_IGN:  # as for what a script starts with "&"
            signal.signal(name, _handle)


def _handle(number: int, _frame: FrameType | None) -> None:
    global _came
    for name in _SIGNALS:
        signal.signal(name, signal.SIG_IGN)  # one is enough: cleaning up takes a moment
    _came = number
    if not _held:
        raise Interrupted(number)


def check() -> None:
    """Raises what has come while it was held back."""
    if _came:
        raise Interrupted(_came)


@contextmanager
def held_back() -> Iterator[None]:
    """Within, Interrupted is raised by `check` alone, and at the end: for loops that look at children
    and never wait for long."""
    global _held
    before, _held = _held, True
    try:
        yield
    finally:
        _held = before
    check()

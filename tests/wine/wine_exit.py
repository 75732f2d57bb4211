"""Exit codes of programs under Wine, which now and then fails on a busy machine: it does not start
a program, loses the connection to its server, or its server kills what has ended but is not gone
half a second later."""

import signal

# As the system says it of a child, and as a shell says it of its own.
KILLED = (-signal.SIGKILL, 128 + signal.SIGKILL)


class WineFailed(Exception):
    """Says nothing about the program: the test has to run again."""


def exit_code(code, said=None):
    """`code`, if it is the program's own. `said` is what a program printed that never fails in
    silence."""
    if code in KILLED:
        raise WineFailed("killed")
    if code != 0 and said == b"":
        raise WineFailed("not started")
    if said and b"wine client error:" in said:
        raise WineFailed("connection lost")
    return code

"""The one error value: what, why and what to do, as one line and an exit code."""

DONE, FAILED, WRONG_USAGE = 0, 1, 2


class Failure(Exception):
    """A job that cannot go on. `what` alone is a whole line already."""

    def __init__(self, what: str, why: str = "", remedy: str = "", code: int = FAILED) -> None:
        line = f"{what}: {why}; {remedy}" if why else what
        super().__init__(" ".join(line.split()))
        self.brief = line.partition("; ")[0]
        self.code = code

"""The one error value: what, why and what to do, as one line and an exit code."""

DONE, FAILED, WRONG_USAGE = 0, 1, 2


class Failure(Exception):
    """A job that cannot go on."""

    def __init__(self, what: str, why: str, remedy: str, code: int = FAILED) -> None:
        super().__init__(" ".join(f"{what}: {why}; {remedy}".split()))
        self.code = code


class Interrupted(Exception):
    """Somebody wants the run to end: a signal came."""

    def __init__(self, number: int) -> None:
        super().__init__(f"interrupted by signal {number}")
        self.code = 128 + number

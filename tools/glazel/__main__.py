"""python3 -m glazel COMMAND ...: the front door."""

from __future__ import annotations

import os
import subprocess
import sys

if sys.version_info < (3, 11):
    sys.exit("glazel: this Python is older than 3.11; install a newer one")

from . import command_line, farm, interrupts, prepare, system
from .failure import DONE, Failure, WRONG_USAGE
from .interrupts import Interrupted
from .render import render
from .report import Report


def main(words: list[str]) -> int:
    if not words:
        print(command_line.main_help(), end="", file=sys.stderr)
        return WRONG_USAGE
    command, report = words[0], Report("plain")
    failure: Failure | Interrupted
    try:
        if command in ("--help", "-h", "help"):
            print(command_line.main_help(), end="", flush=True)
            return DONE
        interrupts.raise_from_now_on()
        options = command_line.parse(command, words[1:])
        if command == "install":
            prepare.install(options.prefix)
            return DONE
        if command not in ("render", "farm"):
            return _pass_on(words)
        report = Report("none" if options.quiet else options.progress or "auto")
        if command == "farm":
            farm.run(options, words[1:], report)
        else:
            render(command_line.render_job(options), report)
        return DONE
    except (Failure, Interrupted) as error:
        failure = error
    except OSError as error:
        why = f"the system says: {error.strerror}"
        failure = Failure(error.filename or command, why, "check the disk and your rights")
        # Python writes what is left of a help at its end, fails again and says so in its own words.
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
    except Exception as error:  # a person gets a line, not our insides
        why = f"{type(error).__name__}: {error}"
        failure = Failure(command, why, "report this to the makers")
    report.say(str(failure), "error")
    return failure.code


def _pass_on(words: list[str]) -> int:
    """The host program does it."""
    if words[0] == "page" and not system.WINDOWS and not os.environ.get("DISPLAY"):
        why = "there is no display for its window (DISPLAY is not set)"
        raise Failure("page", why, "run it on a desktop, or under xvfb-run")
    prepare.programs()
    command = [*system.host_command(), *words]
    if system.WINDOWS:
        return subprocess.run(command, check=False).returncode
    os.execvpe(command[0], command, system.host_environment(words[0] in ("page", "validate")))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

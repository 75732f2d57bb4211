"""The words of the command line: all that can be judged without any program is judged here."""

from __future__ import annotations

import argparse
import os
import re
import shlex
from collections.abc import Callable
from dataclasses import fields
from fractions import Fraction
from typing import Any, NoReturn

from .failure import Failure, WRONG_USAGE
from .names import check_target, input_pattern, look_files, missing, suggestion
from .plan import Job, parse_frames

# A line for each option: its words, then its help. A|B|C are all the words that it takes.
_OPTIONS = """
--look FILE           the look
--key TIME=LOOK       a look at a time; give it for each keyframe
--ease linear|smooth  from one keyframe to the next (default: linear)
--preset NAME         a preset of the effect, applied to the look
--project FILE        what --save-project kept
--save-project FILE   keep the look or the keyframes
--linear auto|on|off  take the pixels for linear light or not (default: as look and input say)
--unclamped           apply a CDL without clamping between its steps
--overwrite           replace what exists under the name of an output
--strict              end with an error when the output cannot hold all that the input has
--frames LIST         frames to render: 1-10,15,20-40x2 (default: all)
--first N             number of the sequence's first picture (default: the lowest there is)
--fps RATE            frames per second of the input: 25, 23.976, 30000/1001
--aspect RATIO        width of a pixel divided by its height
--skip-bad-frames     go on after what cannot be read; the exit code is then still 1
--depth 8|float       precision to work in (default: 8 for 8-bit input, else float)
--codec NAME          h264, hevc, prores, dnxhr, ffv1, vp9, av1, ... (default: the input's)
--quality 1-100       of lossy codecs and JPEG; 100 is best (default: hardly to be seen)
--encoder-options "..." words for ffmpeg's encoder, such as "-preset slow -crf 12"
--bits 8|16|32        bits a channel of output pictures: PNG, TIFF
--dither              spread the rounding of floats to 8-bit pictures, instead of banding
--seed N              another pattern of --dither, other random numbers (default: 0)
--matrix bt601|bt709|bt2020 of a video that does not say (default: by its size)
--range limited|full  of a video that does not say (default: limited; gray: full)
--size WxH            size of raw input
--input-format bgra8|bgra16|gbraf32|gbr8|gbrf32|y4m  what standard input holds (default: y4m)
--input-light display|linear  what the numbers of raw input are (default: display)
--output-format bgra8|bgra16|gbraf32|gbr8|gbrf32|y4m  what standard output gets (default: y4m)
--expect N            frames to expect of a pipe or raw input, for the time left
--progress auto|bar|plain|json|none  how to show progress (default: auto)
--quiet               say nothing but errors
--jobs N              so many at a time (default: half of the processor's cores)
--chunks N            pieces to split it into (default: one for each 500 frames, and each job)
--sbatch "..."        farm slurm: words for sbatch, such as "--partition=fast --cpus-per-task=4"
--folder DIR          where pieces and state are kept until the end (default: OUTPUT.farm)
--keep                leave that folder when all is done
--image FILE          the picture to grade (default: a test chart)
--save-look FILE      where to put the look when the window closes
--points 2-65         points a side of a .cube (default: as exact as the look needs)
--threshold D         pixels that differ by more are counted (default: 1/255)
--warn-over D         end with exit code 3 when the largest difference is more
--fail-over D         end with exit code 4 when the largest difference is more
--picture FILE        where to put a picture of the differences
--amplify N           factor of the differences in the picture (default: 16)
--colour R,G,B        a colour instead of a pixel
--frame N             number of the frame, as --frames of "render" has it (default: the first)
--json                as one JSON object
--level 1-10          how much to ask (default: 5, what a host can live with)
--only PATTERN        groups to ask (default: all)
--skip PATTERN        groups not to ask
--time-limit SECONDS  that a group may take (default: 60)
--list                name the groups and judge nothing
--again REPORT        repeat a report and tell where it differs
--junit FILE          where to put the report as JUnit's XML
--renderer DIR        folder of GZ3Renderer_x64.dll (default: beside the host program)
--plugin FILE         the plug-in (default: GlazelDX_x64.dll beside the host program)
"""
_ROWS = {
    row[1]: row
    for row in re.finditer(r'^--([\w-]+)(?: ("[^"\n]*"|\S+))? +(.*)$', _OPTIONS, re.MULTILINE)
}
COMMANDS = {  # positional words and what the command is for
    "render": ("INPUT OUTPUT", "Render a picture, a sequence or a video with a look."),
    "farm": ("HOW INPUT OUTPUT", "Render in pieces: many at a time, or on a Slurm cluster."),
    "page": ("", "Show the effect's property page under a picture that it grades."),
    "look": ("IN OUT", "Convert a look to .look, .cube or .cc and say what it holds."),
    "blend": ("A B FRACTION OUT.look", "Blend two looks as between keyframes."),
    "presets": ("", "List the presets of the effect."),
    "info": ("", "Tell versions, classes, interfaces and the state of the renderer."),
    "compare": ("ONE OTHER", "Tell how far apart two pictures or sequences are."),
    "explain": ("...", "Tell what a look does to one pixel: X,Y INPUT, or --colour."),
    "validate": ("...", "Judge a plug-in or a renderer by its contract: FILE, --list or --again."),
    "install": ("PREFIX", "Copy the programs to PREFIX/lib/glazel and link PREFIX/bin/glazel."),
}
_HOSTS = "look key ease preset project linear unclamped bits dither seed"  # as "render" gets them
_TOOLS = "renderer plugin"
_JOB = (
    f"{_HOSTS} overwrite strict frames first fps aspect depth codec quality "
    f"encoder-options matrix range progress quiet {_TOOLS}"
)
_RAW = "size input-format input-light expect"
_OPTIONS_OF = {  # x:A|B takes these words alone
    "render": f"{_JOB} skip-bad-frames save-project {_RAW} output-format",
    "farm": f"jobs chunks sbatch folder keep {_JOB}",
    "page": f"image frame look linear:on|off unclamped depth save-look overwrite {_TOOLS}",
    "look": f"points overwrite linear:on|off unclamped {_TOOLS}",
    "blend": f"overwrite unclamped {_TOOLS}",
    "presets": f"json {_TOOLS}",
    "info": f"json {_TOOLS}",
    "compare": "threshold warn-over fail-over picture amplify overwrite size json",
    "explain": f"colour look linear unclamped depth frame size json {_TOOLS}",
    "validate": "level only skip seed jobs time-limit list again json:FILE junit overwrite renderer",
    "install": "",
}
_RENDER_HELP = """
INPUT and OUTPUT are
  a picture             photo.png, photo.jpg, photo.tif, photo.bmp, plate.exr, scan.dpx, ...
  a numbered sequence   shot_%04d.png or shot_####.exr
  a video               anything that ffmpeg reads; the output's ending says its kind
  -                     Y4M on standard input or output, or raw frames with --size
The output keeps the input's codec, depth, chroma, colours, sound, subtitles, chapters and so
on where its kind of file can hold them; what it cannot hold is told in one line each.

TIME is seconds (2.5), HH:MM:SS.mmm (00:01:02.500) or a frame (48f). A LOOK is a file that the
renderer reads, FILE#ID for one correction out of a collection, or "CDL|LUT" for both.

Examples:
  glazel render photo.png graded.png --look warm.cube
  glazel render clip.mov graded.mov --look warm.cube
  glazel render clip.mp4 graded.mkv --key 0=warm.cube --key 5=cool.cc --ease smooth
  glazel render shot_%04d.exr out_%04d.exr --look day.ccc#shot12 --frames 1001-1040
  ffmpeg -i in.mp4 -f yuv4mpegpipe - | glazel render - out.mkv --look warm.cube

Exit codes: 0 done, 1 the job failed, 2 wrong usage, 130 and 143 stopped by a signal."""
_FARM_HELP = """
HOW is
  local                 on this machine, --jobs pieces at a time
  slurm                 as one array job with a joining job behind it; wants a folder that all
                        nodes see under the same name, and glazel there or on each of them
INPUT is a video or a numbered sequence, OUTPUT likewise; other options are those of "render".
The output is the one that "glazel render" would make: the frames before encoding are the same,
sound and all other streams come from the input as a whole. Whatever breaks off (a task, this
command, the machine), the same command goes on: what is whole is not rendered again.

Examples:
  glazel farm local film.mov graded.mov --look warm.cube --jobs 4
  glazel farm slurm film.mov graded.mov --look warm.cube --chunks 100 --sbatch "--account=film"

Exit codes: those of "render". docs/farm.md tells how to set up a cluster."""


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        what, _, why = message.partition(": ")
        what = what.removeprefix("argument ")
        if not why:
            what, why = "command line", message
        raise Failure(what, why, f'see "{self.prog} --help"', WRONG_USAGE)

    def print_help(self, file: Any = None) -> None:
        # The base class keeps to itself that nobody could be told.
        print(self.format_help(), end="", file=file, flush=True)


def main_help() -> str:
    rows = "\n".join(f"  {name:9} {words[1]}" for name, words in COMMANDS.items())
    return (
        "Usage: glazel COMMAND [WORDS...]\n\nRenders pictures and video through the Glazel DX "
        f'plug-in.\n\n{rows}\n\n"glazel COMMAND --help" tells more about a command.\n'
    )


def _parser(command: str) -> _Parser:
    positional, purpose = COMMANDS[command]
    parser = _Parser(
        prog=f"glazel {command}",
        description=purpose,
        epilog={"render": _RENDER_HELP, "farm": _FARM_HELP}.get(command),
        formatter_class=argparse.RawDescriptionHelpFormatter,
        allow_abbrev=False,
    )
    for word in positional.split():
        if word == "...":
            parser.add_argument("words", nargs="*", metavar="...")
        else:
            name = word.lower().replace(".", "_")
            parser.add_argument(name, metavar=word, type=_TYPES.get(name, str))
    for option in _OPTIONS_OF[command].split():
        name, _, narrower = option.partition(":")
        _, value, text = _ROWS[name].groups()
        words: dict[str, Any] = {"help": text.replace("%", "%%")}
        value = narrower or value
        if value:
            words |= {"metavar": value, "type": _TYPES.get(name, str)}
            words |= {"choices": value.split("|")} if "|" in value else {}
            words |= {"action": "append"} if name in ("key", "only", "skip") else {}
        else:
            words["action"] = "store_true"
        parser.add_argument(f"--{name}", **words)
    return parser


def parse(command: str, words: list[str]) -> argparse.Namespace:
    """The options in their types. Throws Failure for names of files that are not there too."""
    if command not in COMMANDS:
        near = suggestion(command, list(COMMANDS))
        raise Failure(command, "there is no such command", near or "see glazel --help", WRONG_USAGE)
    parser = _parser(command)
    known = [name for action in parser._actions for name in action.option_strings]
    given: list[str] = []
    for at, word in enumerate(words):
        name = word.partition("=")[0]
        if word == "--":
            given += words[at:]
            break
        if given and given[-1] in ("--sbatch", "--encoder-options"):
            given[-1] += f"={word}"  # argparse would take "-an" for an option of ours
            continue
        if name.startswith("--") and name not in known and (near := suggestion(name, known)):
            raise Failure(word, "there is no such option", near, WRONG_USAGE)
        given.append(word)
    options, unknown = parser.parse_known_args(given)
    for word in unknown:
        why = "there is no such option" if word.startswith("-") else "it is one word too many"
        raise Failure(word, why, f'see "glazel {command} --help"', WRONG_USAGE)
    return options


def _checked(check: Callable[[str], object]) -> Callable[[str], str]:
    """The word as it is, when `check` has nothing against it."""

    def same(text: str) -> str:
        try:
            check(text)
        except ValueError as error:
            raise argparse.ArgumentTypeError(str(error).lower()) from error
        return text

    return same


def _look(word: str) -> None:
    for file in look_files(word):
        if not os.path.exists(file):
            raise missing(file)


def _file(path: str) -> None:
    if not os.path.exists(path) and not input_pattern(path):
        raise missing(path)


def _ratio(text: str) -> Fraction:
    try:
        ratio = Fraction(text.replace(":", "/"))
        ratio = ratio if "/" in text else ratio.limit_denominator(1001)
    except (ValueError, ZeroDivisionError):
        ratio = Fraction(0)
    if ratio <= 0:
        raise argparse.ArgumentTypeError(f"{text} is no number above 0, as 25 or 30000/1001 is")
    return ratio


def _whole(least: int, most: int) -> Callable[[str], int]:
    def number(text: str) -> int:
        if not text.isdecimal() or not least <= int(text) <= most:
            raise argparse.ArgumentTypeError(f"{text} is no number from {least} to {most}")
        return int(text)

    return number


_TYPES: dict[str, Callable[[str], Any]] = {
    **dict.fromkeys(("in", "a", "b", "look"), _checked(_look)),
    **dict.fromkeys(("one", "other", "image", "project"), _checked(_file)),
    **dict.fromkeys(("encoder-options", "sbatch"), _checked(shlex.split)),
    **dict.fromkeys(("fps", "aspect"), _ratio),
    **dict.fromkeys(("jobs", "chunks"), _whole(1, 1 << 20)),
    "key": _checked(lambda word: _look(word.partition("=")[2])),
    "frames": _checked(parse_frames),
    "quality": _whole(1, 100),
    "first": _whole(0, 1 << 40),
}


def render_job(options: argparse.Namespace) -> Job:
    given = vars(options)
    if not any(given[name] for name in ("look", "key", "project", "preset")):
        remedy = 'give one, such as --look warm.cube; see "glazel render --help"'
        why = "there is no --look, --key, --project or --preset"
        raise Failure("command line", why, remedy, WRONG_USAGE)
    if given.get("save_project"):
        check_target(options.save_project, options.overwrite)
    y4m = (None, "y4m")
    is_raw = given.get("size") or given.get("input_format") not in y4m
    raw_in = options.input == "-" and bool(is_raw)
    raw_out = options.output == "-" and given.get("output_format") not in y4m
    names = f"{_HOSTS} {_TOOLS} save-project" + (" output-format" if raw_out else "")
    if raw_in or options.input.endswith((".bgra", ".raw")):
        names += f" {_RAW}"
    elif options.input == "-":
        names += " expect"
    host: list[str] = []
    for name in names.split():
        value = given.get(name.replace("-", "_"))
        for each in value if isinstance(value, list) else [value] if value else []:
            host += [f"--{name}"] if each is True else [f"--{name}", each]
    own = {field.name: given[field.name] for field in fields(Job) if field.name in given}
    return Job(**own, host=tuple(host), raw_in=raw_in, raw_out=raw_out)

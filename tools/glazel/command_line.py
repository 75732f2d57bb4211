"""The words of the command line: all that can be judged without any program is judged here."""

from __future__ import annotations

import argparse
import os
import re
import shlex
from fractions import Fraction
from typing import NoReturn

from .failure import Failure, WRONG_USAGE
from .names import check_target, input_pattern, missing, suggestion
from .plan import Job, parse_frames

# A line for each option: its words, then its help. A|B|C are all the words that it takes.
_TOOLS = """
--renderer DIR        folder of GZ3Renderer_x64.dll (default: beside the host program)
--plugin FILE         the plug-in (default: GlazelDX_x64.dll beside the host program)
"""
_OPTIONS = {
    "render": """
--look FILE           the look to apply
--key TIME=LOOK       a look at a time; give it for each keyframe
--ease linear|smooth  from one keyframe to the next (default: linear)
--preset NAME         a preset of the effect, applied to the look
--project FILE        what --save-project kept
--save-project FILE   keep the look or the keyframes
--linear auto|on|off  take the pixels for linear light or not (default: auto)
--unclamped           apply a CDL without clamping between its steps
--overwrite           replace an output, or a project, that exists
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
--seed N              another pattern of --dither (default: 0)
--matrix bt601|bt709|bt2020 of a video that does not say (default: by its size)
--range limited|full  of a video that does not say (default: limited; gray: full)
--size WxH            size of raw input
--input-format bgra8|bgra16|gbraf32|y4m  what standard input holds (default: y4m)
--input-light display|linear  what the numbers of raw input are (default: display)
--output-format bgra8|bgra16|gbraf32|y4m  what standard output gets (default: y4m)
--expect N            frames to expect of raw input, for the time left
--progress auto|bar|plain|json|none  how to show progress (default: auto)
--quiet               say nothing but errors
""",
    "page": """
--image FILE          the picture to grade (default: a test chart)
--look FILE           the look to begin with (default: none)
--linear on|off       take the pixels for linear light or not (default: as the look says)
--unclamped           apply a CDL without clamping between its steps
--depth 8|float       precision to work in (default: 8 for 8-bit input, else float)
--save-look FILE      where to put the look when the window closes
--overwrite           replace the FILE of --save-look that exists
""",
    "look": """
--points 2-65         points a side of a .cube (default: as exact as the look needs)
--overwrite           replace an output that exists
--linear on|off       take the pixels for linear light or not (default: as the look says)
--unclamped           apply a CDL without clamping between its steps
""",
    "blend": """
--overwrite           replace an output that exists
--unclamped           apply a CDL without clamping between its steps
""",
    "presets": """
--json                as one JSON object
""",
    "info": """
--json                as one JSON object
""",
    "compare": """
--threshold D         pixels that differ by more are counted (default: 1/255)
--warn-over D         end with exit code 3 when the largest difference is more
--fail-over D         end with exit code 4 when the largest difference is more
--picture FILE        where to put a picture of the differences
--amplify N           factor of the differences in the picture (default: 16)
--overwrite           replace a picture that exists
--size WxH            size of raw input
--json                as one JSON object
""",
    "explain": """
--colour R,G,B        a colour instead of a pixel
--look FILE           the look to explain
--linear auto|on|off  take the pixels for linear light or not (default: auto)
--unclamped           apply a CDL without clamping between its steps
--depth 8|float       precision to work in (default: 8 for 8-bit input, else float)
--frame N             number of the frame, as --frames of "render" has it (default: the first)
--size WxH            size of raw input
--json                as one JSON object
""",
    "install": "",
}
_FARM = """
--jobs N              farm local: pieces at a time (default: half of the processor's cores)
--chunks N            pieces to split it into (default: one for each 500 frames, and each job)
--sbatch "..."        farm slurm: words for sbatch, such as "--partition=fast --cpus-per-task=4"
--folder DIR          where pieces and state are kept until the end (default: OUTPUT.farm)
--keep                leave that folder when all is done
"""
_OF_WHOLES = ("--save-project", "--skip", "--size", "--input-", "--output-", "--expect")
_OPTIONS["farm"] = "\n".join(
    [_FARM.strip()]
    + [line for line in _OPTIONS["render"].strip().splitlines() if not line.startswith(_OF_WHOLES)]
)
_COMMANDS = {  # positional words and what the command is for
    "render": ("INPUT OUTPUT", "Render a picture, a sequence or a video with a look."),
    "farm": ("HOW INPUT OUTPUT", "Render in pieces: many at a time, or on a Slurm cluster."),
    "page": ("", "Show the effect's property page under a picture that it grades."),
    "look": ("IN OUT", "Convert a look to .look, .cube or .cc and say what it holds."),
    "blend": ("A B FRACTION OUT.look", "Blend two looks as between keyframes."),
    "presets": ("", "List the presets of the effect."),
    "info": ("", "Tell versions, classes, interfaces and the state of the renderer."),
    "compare": ("A B", "Tell how far apart two pictures or sequences are."),
    "explain": ("...", "Tell what a look does to one pixel: X,Y INPUT, or --colour."),
    "install": ("PREFIX", "Copy the programs to PREFIX/lib/glazel and link PREFIX/bin/glazel."),
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
_LOOKS = {"--look", "--key"}  # hold looks
_FILES = {"--image", "--project"}  # hold files that must be there
# Options of "render" that are not the host program's, or not as they are.
_OWN = {"overwrite", "strict", "frames", "first", "fps", "skip_bad_frames", "depth", "codec"}
_OWN |= {"quality", "encoder_options", "matrix", "range", "progress", "quiet", "aspect"}
_RAW = {"size", "input_format", "input_light", "output_format", "expect"}
_MATRICES = {"bt601": "smpte170m", "bt709": "bt709", "bt2020": "bt2020nc"}


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        what, _, why = message.partition(": ")
        what = what.removeprefix("argument ")
        if not why:
            what, why = "command line", message
        raise Failure(what, why, f'see "{self.prog} --help"', WRONG_USAGE)


def main_help() -> str:
    rows = "\n".join(f"  {name:9} {words[1]}" for name, words in _COMMANDS.items())
    return (
        "Usage: glazel COMMAND [WORDS...]\n\nRenders pictures and video through the Glazel DX "
        f'plug-in.\n\n{rows}\n\n"glazel COMMAND --help" tells more about a command.\n'
    )


def commands() -> list[str]:
    return list(_COMMANDS)


def options_of(command: str) -> str:
    more = "" if command in ("compare", "install") else _TOOLS
    return _OPTIONS[command].strip("\n") + more.rstrip("\n")


def _parser(command: str) -> _Parser:
    positional, purpose = _COMMANDS[command]
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
            parser.add_argument(word.lower().replace(".", "_"), metavar=word)
    for line in options_of(command).strip().splitlines():
        found = re.fullmatch(r'(--[\w-]+)(?: ("[^"]*"|\S+))? +(.*)', line)
        assert found, line
        name, value, text = found[1], found[2], found[3].replace("%", "%%")
        if re.fullmatch(r"--[\w-]+ {2,}.*", line):
            parser.add_argument(name, action="store_true", help=text)
            continue
        many = {"action": "append"} if name == "--key" else {}
        choices = value.split("|") if "|" in value else None
        parser.add_argument(name, metavar=value, choices=choices, help=text, **many)  # type: ignore
    return parser


def parse(command: str, words: list[str]) -> tuple[argparse.Namespace, list[str]]:
    """The options, and words for the host program that are not known here."""
    if command not in _COMMANDS:
        near = suggestion(command, commands())
        raise Failure(command, "there is no such command", near or "see glazel --help", WRONG_USAGE)
    parser = _parser(command)
    known = [name for action in parser._actions for name in action.option_strings]
    for word in words[: words.index("--")] if "--" in words else words:
        near = suggestion(word.partition("=")[0], known)
        if word.startswith("--") and word.partition("=")[0] not in known and near:
            raise Failure(word, "there is no such option", near, WRONG_USAGE)
    options, unknown = parser.parse_known_args(words)
    for word in unknown:
        near = suggestion(word.partition("=")[0], known)
        if command == "render" or near:
            why = "there is no such option" if word.startswith("-") else "it is one word too many"
            remedy = near or f'see "glazel {command} --help"'
            raise Failure(word, why, remedy, WRONG_USAGE)
    return options, unknown


def check_look(word: str) -> None:
    """Whether the files of FILE, FILE#ID or CDL|LUT are there."""
    parts = [word] if os.path.exists(word) else word.split("|")
    for part in parts:
        file = part if os.path.exists(part) else part.rpartition("#")[0] or part
        if file and not os.path.exists(file):
            raise missing(file)


def check_files(command: str, options: argparse.Namespace) -> None:
    """Misspelt names, before anything is installed or built."""
    given = vars(options)
    looks = [given[name] for name in ("look", "in", "a", "b") if isinstance(given.get(name), str)]
    if command == "compare":
        looks = []
        for name in (given["a"], given["b"]):
            if not os.path.exists(name) and not input_pattern(name):
                raise missing(name)
    looks += [key.partition("=")[2] for key in given.get("key") or [] if "=" in key]
    for look in looks:
        check_look(look)
    for name in ("image", "project"):
        if given.get(name) and not os.path.exists(given[name]):
            raise missing(given[name])
    if given.get("save_project"):
        check_target(given["save_project"], options.overwrite)


def _rate(text: str) -> Fraction:
    try:
        rate = Fraction(text)
        if rate > 0:
            return rate.limit_denominator(1001) if "/" not in text else rate
    except (ValueError, ZeroDivisionError):
        pass
    why = "a rate is a number above 0, as in 25 or 30000/1001"
    raise Failure(f"--fps {text}", why, 'see "glazel render --help"', WRONG_USAGE)


def _number(options: argparse.Namespace, name: str, least: int, most: int) -> int | None:
    text = getattr(options, name)
    if text is None:
        return None
    if not text.isdigit() or not least <= int(text) <= most:
        why = f"it is a number from {least} to {most}"
        raise Failure(f"--{name} {text}", why, 'see "glazel render --help"', WRONG_USAGE)
    return int(text)


def render_job(options: argparse.Namespace) -> tuple[Job, tuple[bool, bool]]:
    """The job, and whether raw frames come in and go out."""
    given = vars(options)
    if not any(given[name] for name in ("look", "key", "project", "preset")):
        remedy = 'give one, such as --look warm.cube; see "glazel render --help"'
        why = "there is no --look, --key, --project or --preset"
        raise Failure("command line", why, remedy, WRONG_USAGE)
    if options.frames is not None:
        parse_frames(options.frames)
    try:
        aspect = Fraction(options.aspect.replace(":", "/")) if options.aspect else None
        shlex.split(options.encoder_options or "")
    except (ValueError, ZeroDivisionError) as error:
        why = str(error).lower()
        raise Failure("command line", why, 'see "glazel render --help"', WRONG_USAGE) from error
    raw_in = options.input == "-" and (options.size or options.input_format not in (None, "y4m"))
    raw_out = options.output == "-" and options.output_format not in (None, "y4m")
    own = _OWN | {"input", "output"}
    if not raw_in and not options.input.endswith((".bgra", ".raw")):
        own |= {"size", "input_format", "input_light", "expect"}
    own |= set() if raw_out else {"output_format"}
    host: list[str] = []
    for name, value in given.items():
        word = "--" + name.replace("_", "-")
        if name in own or value in (None, False):
            continue
        values = value if isinstance(value, list) else [value]
        host += [word] if value is True else [w for v in values for w in (word, v)]
    if options.overwrite and options.save_project and options.output == "-":
        host.append("--overwrite")
    full = None if options.range is None else options.range == "full"
    job = Job(
        options.input,
        options.output,
        tuple(host),
        options.frames,
        _rate(options.fps) if options.fps else None,
        _number(options, "first", 0, 1 << 40),
        aspect,
        options.depth,
        options.codec,
        _number(options, "quality", 1, 100),
        options.encoder_options or "",
        _MATRICES.get(options.matrix),
        full,
        options.overwrite,
        options.strict,
        options.skip_bad_frames,
    )
    return job, (bool(raw_in), raw_out)
